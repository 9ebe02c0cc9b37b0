# Whatever run returns, nothing is reported. A null handle queues nothing,
# silently, and the next command of the line still runs.
% file board.dat
= board
% copy @TESTLIBS@/usecase/basic/libwattscopestandalone.so wattscope/libwattscopestandalone.so
< connect --config board.dat hosted
< wattscope -o ret0.csv ws; wattscope -o ret1.csv ws; wattscope -o ret-1.csv ws; prodtest -i ret2.txt
< wattscope -o null.csv ws; prodtest --input null.txt; wattscope -o f.csv ws
% include banner
>| zelno> zelno> zelno> zelno> 
% expect-file double_record.txt
=~ .*
= wattscope_destroy 1 runs=1 stops=0 end=self
= wattscope_destroy 2 runs=1 stops=0 end=self
= wattscope_destroy 3 runs=1 stops=0 end=self
= prodtest_destroy 4 runs=1 stops=0 end=self
= wattscope_create null
=~ .*
= prodtest_create null
= input=null.txt
= config=board.dat
= device=unused
= wattscope_create 5
=~ .*
= wattscope_destroy 5 runs=1 stops=0 end=self
