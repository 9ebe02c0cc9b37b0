# The library beside the working directory's parent wins over those in
# wattscope/ and on the search path, at each use case's load. It lacks
# wattscope_destroy: the handle is lost, and the error names its path.
% cd run
% file run/board.dat
% copy @TESTLIBS@/usecase/no_wattscope_destroy/@LIB(wattscopestandalone)@ @LIB(wattscopestandalone)@
% copy @TESTLIBS@/usecase/basic/@LIB(wattscopestandalone)@ run/wattscope/@LIB(wattscopestandalone)@
% env @SEARCHVAR@=@SEARCH(@TESTLIBS@/usecase/basic)@
< connect --config board.dat hosted
< wattscope -o where.csv ws; prodtest --input where.txt
% include banner
>| zelno> zelno> zelno> 
! Function wattscope_destroy not found in @PATH(../@LIB(wattscopestandalone)@)@
% expect-file run/double_record.txt
=~ wattscope_create 1 .*
= library=no_wattscope_destroy
=~ prodtest_create 2 .*
= library=no_wattscope_destroy
= prodtest_destroy 2 runs=1 stops=0 end=self
