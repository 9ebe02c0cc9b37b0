# Help needs no session, wins over wrong or missing options beside it, and
# neither loads the library nor queues anything: the one load that the last
# commands make, one for each use case, are the first to add the dependency
# folder to the search.
% file board.dat
= board
% copy @TESTLIBS@/usecase/basic/libwattscopestandalone.so wattscope/libwattscopestandalone.so
% env LD_LIBRARY_PATH=/before
< wattscope --help
< wattscope -h --bogus -s abc
< prodtest -h
< prodtest --help --input
< help wattscope prodtest
< connect --config board.dat hosted
< prodtest -h --input limits.txt
< wattscope -o f.csv -h ws
< wattscope -o env.csv ws; prodtest --input env.txt
% include banner
>| zelno> 
% include wattscope_help
>| zelno> 
% include wattscope_help
>| zelno> 
% include prodtest_help
>| zelno> 
% include prodtest_help
>| zelno> 
% include wattscope_help
% include prodtest_help
>| zelno> zelno> 
% include prodtest_help
>| zelno> 
% include wattscope_help
>| zelno> zelno> 
% expect-file double_record.txt
= wattscope_create 1
=~ .*
= LD_LIBRARY_PATH=/before:../../../../common/dblnk
= prodtest_create 2
= input=env.txt
= config=board.dat
= device=unused
= LD_LIBRARY_PATH=/before:../../../../common/dblnk:../../../../common/dblnk
= wattscope_destroy 1 runs=1 stops=0 end=self
= prodtest_destroy 2 runs=1 stops=0 end=self
