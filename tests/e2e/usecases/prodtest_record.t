# prodtest hands over input, config and device, in the record's order, and
# runs with no time limit until it ends by itself.
% file board.dat
= board
% copy @TESTLIBS@/usecase/basic/libwattscopestandalone.so wattscope/libwattscopestandalone.so
< connect --config board.dat --device probe7 hosted
< prodtest --input limits.txt
< prodtest -i ms20.txt
% include banner
>| zelno> zelno> zelno> zelno> 
% expect-file double_record.txt
= prodtest_create 1
= input=limits.txt
= config=board.dat
= device=probe7
= prodtest_destroy 1 runs=1 stops=0 end=self
= prodtest_create 2
= input=ms20.txt
= config=board.dat
= device=probe7
= prodtest_destroy 2 runs=1 stops=0 end=self
