# The probe-access folder, four levels up, is added to the search before the
# first attempt, so a library there is found by the search. The copy of zelno
# away from the build tree reaches no stand-in library of its own.
% program bin/zelno
% unset LD_LIBRARY_PATH
% mkdir a/b/c/d
% cd a/b/c/d
% file a/b/c/d/board.dat
= board
% copy @TESTLIBS@/usecase/basic/libwattscopestandalone.so common/dblnk/libwattscopestandalone.so
< connect --config board.dat hosted
< wattscope -o env_where.csv ws
% include banner
>| zelno> zelno> zelno> 
% expect-file a/b/c/d/double_record.txt
=~ .*
= LD_LIBRARY_PATH=:../../../../common/dblnk
= library=../../../../common/dblnk/libwattscopestandalone.so
=~ .*
