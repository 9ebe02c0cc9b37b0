# Without one beside the parent, the library in wattscope/ wins over the
# search path. Lacking prodtest_stop, prodtest fails each time before anything
# is queued, and gives its handle back. The conversion lacks its function.
% program bin/zelno
% file target.tgcfg
% copy @TESTLIBS@/usecase/no_prodtest_stop/@LIB(wattscopestandalone)@ wattscope/@LIB(wattscopestandalone)@
% env @SEARCHVAR@=@SEARCH(@TESTLIBS@/usecase/basic:@TESTLIBS@/tgcfg/no_function)@
< connect --config target.tgcfg hosted
< prodtest --input limits.txt; wattscope -o f.csv ws
< prodtest --input limits.txt
% include banner
>| zelno> zelno> zelno> zelno> 
! Function TGCFGToBoardConfigFile not found
! Function prodtest_stop not found in @PATH(wattscope/@LIB(wattscopestandalone)@)@
! Function prodtest_stop not found in @PATH(wattscope/@LIB(wattscopestandalone)@)@
% no-file ws_board.dat
% expect-file double_record.txt
= prodtest_create 1 input=limits.txt config=target.tgcfg device=unused
= prodtest_destroy 1 runs=0 stops=0 end=none
=~ wattscope_create 2 .*
= wattscope_destroy 2 runs=1 stops=0 end=self
= prodtest_create 3 input=limits.txt config=target.tgcfg device=unused
= prodtest_destroy 3 runs=0 stops=0 end=none
