# The probe-access folder, four levels up, joins the search before the first
# attempt, so a library there is found. This one exports its functions only
# under a leading underscore, and serves both use cases all the same. The
# copy of zelno away from the build tree reaches no stand-in of its own.
% program bin/zelno
% unset LD_LIBRARY_PATH
% cd a/b/c/d
% file a/b/c/d/board.dat
% copy @TESTLIBS@/usecase/underscore/libwattscopestandalone.so common/dblnk/libwattscopestandalone.so
< connect --config board.dat hosted
< wattscope -o env_where_wait.csv -D 20 ws; prodtest --input ms10.txt
% include banner
> zelno> zelno> Stopping wattscope after 20ms
>| zelno> 
% expect-file a/b/c/d/double_record.txt
=~ wattscope_create 1 .*
= LD_LIBRARY_PATH=:../../../../common/dblnk
= library=../../../../common/dblnk/libwattscopestandalone.so
=~ prodtest_create 2 .*
= wattscope_destroy 1 runs=1 stops=1 end=stopped
= prodtest_destroy 2 runs=1 stops=0 end=self
