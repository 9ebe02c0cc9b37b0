# Found only by the search, the library loads at the third attempt; a missing
# function names the second's path, and create's handle goes back (runs=0).
# A failed conversion writes no board file; the session stays on the target.
% program bin/zelno
% file target.tgcfg
% env @SEARCHVAR@=@SEARCH(@TESTLIBS@/usecase/no_wattscope_run:@TESTLIBS@/tgcfg/fails)@
< connect --config target.tgcfg -d dev hosted
< wattscope -o where.csv ws
< prodtest --input where.txt
% include banner
>| zelno> zelno> zelno> zelno> 
! Could not convert TGCFG to Board Config file.
! Function wattscope_run not found in @PATH(wattscope/@LIB(wattscopestandalone)@)@
% no-file ws_board.dat
% expect-file double_record.txt
=~ wattscope_create 1 .*
= library=no_wattscope_run
= wattscope_destroy 1 runs=0 stops=0 end=none
= prodtest_create 2 input=where.txt config=target.tgcfg device=dev
= library=no_wattscope_run
= prodtest_destroy 2 runs=1 stops=0 end=self
