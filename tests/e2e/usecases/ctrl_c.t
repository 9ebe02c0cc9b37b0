# Ctrl+C stops a use case without a time limit, wattscope and prodtest
# alike; the prompt comes back and the next line runs.
% file board.dat
= board
% copy @TESTLIBS@/usecase/basic/libwattscopestandalone.so wattscope/libwattscopestandalone.so
< connect --config board.dat hosted
< wattscope -o wait_say.csv ws
% await wattscope 1 running
% signal INT
< prodtest --input wait_say.txt
% await prodtest 2 running
% signal INT
< prodtest --input limits.txt
% include banner
> zelno> zelno> wattscope 1 running
> zelno> prodtest 2 running
>| zelno> zelno> 
% expect-file double_record.txt
=~ .*
= wattscope_destroy 1 runs=1 stops=1 end=stopped
=~ .*
= prodtest_destroy 2 runs=1 stops=1 end=stopped
=~ .*
= prodtest_destroy 3 runs=1 stops=0 end=self
