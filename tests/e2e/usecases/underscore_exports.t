# A library that exports its functions only under a leading underscore
# serves both use cases all the same.
% file board.dat
= board
% copy @TESTLIBS@/usecase/underscore/libwattscopestandalone.so wattscope/libwattscopestandalone.so
< connect --config board.dat hosted
< wattscope -o wait.csv -D 20 ws; prodtest --input ms10.txt
% include banner
> zelno> zelno> Stopping wattscope after 20ms
>| zelno> 
% expect-file double_record.txt
=~ .*
= wattscope_destroy 1 runs=1 stops=1 end=stopped
= prodtest_destroy 2 runs=1 stops=0 end=self
