# With the library nowhere, each command that needs it tries again and says
# so; parse errors never try.
% program bin/zelno
% unset LD_LIBRARY_PATH
% file board.dat
= board
< connect --config board.dat hosted
< wattscope -o f.csv ws
< wattscope -o f.csv ws; prodtest --input limits.txt
< prodtest
% include banner
>| zelno> zelno> zelno> zelno> zelno> 
! Unable to load libwattscopestandalone.so
! Unable to load libwattscopestandalone.so
! Unable to load libwattscopestandalone.so
! prodtest: missing option -i|--input=<config file>
