# With no library to be found, each command that needs one tries again and
# says so: connect with a target file, whose session stands all the same,
# and each use case. A parse error never tries.
% program bin/zelno
% unset LD_LIBRARY_PATH
% file target.tgcfg
< connect --config target.tgcfg hosted
< connect --config target.tgcfg hosted
< wattscope -o f.csv ws
< wattscope -o f.csv ws; prodtest --input limits.txt
< prodtest
% include banner
>| zelno> zelno> zelno> zelno> zelno> zelno> 
! Unable to load libtgcfgsetup.so
! Unable to load libtgcfgsetup.so
! Unable to load libwattscopestandalone.so
! Unable to load libwattscopestandalone.so
! Unable to load libwattscopestandalone.so
! prodtest: missing option -i|--input=<config file>
% no-file ws_board.dat
