# This copy of zelno reaches no stand-in library. Without the conversion
# library, connect says so at each try, and the session stands on the target
# file. The probe-access folder, four levels up, joins the search before the
# first attempt, so a use-case library there, which exports its functions
# only under a leading underscore, serves both use cases.
% program bin/zelno
% env @SEARCHVAR@=@SEARCH(/nowhere)@
% cd a/b/c/d
% file a/b/c/d/target.tgcfg
% copy @TESTLIBS@/usecase/underscore/@LIB(wattscopestandalone)@ common/dblnk/@LIB(wattscopestandalone)@
< connect --config target.tgcfg hosted
< connect --config target.tgcfg hosted
< wattscope -o env_where_wait.csv -D 20 ws; prodtest --input ms10.txt
% include banner
> zelno> zelno> zelno> Stopping wattscope after 20ms
>| zelno> 
! Unable to load @LIB(tgcfgsetup)@
! Unable to load @LIB(tgcfgsetup)@
% no-file a/b/c/d/ws_board.dat
% expect-file a/b/c/d/double_record.txt
=~ wattscope_create 1 .*
= @SEARCHVAR@=@SEARCH(/nowhere:../../../../common/bin:../../../../common/dblnk:../../../../common/bin:../../../../common/dblnk:../../../../common/dblnk)@
= library=underscore
= prodtest_create 2 input=ms10.txt config=target.tgcfg device=unused
= wattscope_destroy 1 runs=1 stops=1 end=stopped
= prodtest_destroy 2 runs=1 stops=0 end=self
