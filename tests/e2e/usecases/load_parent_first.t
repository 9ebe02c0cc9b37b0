# The library beside the parent of the working directory wins over one in
# wattscope/ and one on the search path; prodtest's own load takes the same.
% mkdir run
% cd run
% file run/board.dat
= board
% copy @TESTLIBS@/usecase/basic/libwattscopestandalone.so libwattscopestandalone.so
% copy @TESTLIBS@/usecase/underscore/libwattscopestandalone.so run/wattscope/libwattscopestandalone.so
% env LD_LIBRARY_PATH=@TESTLIBS@/usecase/underscore
< connect --config board.dat hosted
< wattscope -o where.csv ws; prodtest --input where.txt
% include banner
>| zelno> zelno> zelno> 
% expect-file run/double_record.txt
=~ .*
= library=../libwattscopestandalone.so
=~ .*
= library=../libwattscopestandalone.so
=~ .*
