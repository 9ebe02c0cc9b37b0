# Found only by the search, the library loads at the third attempt, and a
# missing function is reported with the path of the second. The handle that
# create gave is handed back before the error leaves (runs=0).
% file board.dat
% env LD_LIBRARY_PATH=@TESTLIBS@/usecase/no_wattscope_run
< connect --config board.dat hosted
< wattscope -o where.csv ws
< prodtest --input where.txt
% include banner
>| zelno> zelno> zelno> zelno> 
! Function wattscope_run not found in wattscope/libwattscopestandalone.so
% expect-file double_record.txt
=~ wattscope_create 1 .*
= library=@TESTLIBS@/usecase/no_wattscope_run/libwattscopestandalone.so
= wattscope_destroy 1 runs=0 stops=0 end=none
=~ prodtest_create 2 .*
= library=@TESTLIBS@/usecase/no_wattscope_run/libwattscopestandalone.so
= prodtest_destroy 2 runs=1 stops=0 end=self
