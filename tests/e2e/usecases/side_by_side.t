# The use cases of one line run at the same time: each of these two waits
# for the other to be running. Ctrl+C then stops both at once.
% file board.dat
= board
% copy @TESTLIBS@/usecase/basic/libwattscopestandalone.so wattscope/libwattscopestandalone.so
< connect --config board.dat hosted
< wattscope -o meet.csv ws; prodtest --input meet.txt
< prodtest --input wait.txt; wattscope -o wait_say.csv ws
% await wattscope 4 running
% signal INT
% include banner
> zelno> zelno> zelno> wattscope 4 running
>| zelno> 
% expect-file double_record.txt
=~ .*
= wattscope_destroy 1 runs=1 stops=0 end=self met=1
= prodtest_destroy 2 runs=1 stops=0 end=self met=1
=~ .*
= prodtest_destroy 3 runs=1 stops=1 end=stopped
= wattscope_destroy 4 runs=1 stops=1 end=stopped
