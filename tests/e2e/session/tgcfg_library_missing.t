# Without the conversion library the session still stands, on the target
# file; each try reports the load failure.
% program bin/zelno
% unset LD_LIBRARY_PATH
% file target.tgcfg
= target
< connect --config target.tgcfg hosted
< connect --config target.tgcfg hosted
< prodtest
% include banner
>| zelno> zelno> zelno> zelno> 
! Unable to load libtgcfgsetup.so
! Unable to load libtgcfgsetup.so
! prodtest: missing option -i|--input=<config file>
% no-file ws_board.dat
