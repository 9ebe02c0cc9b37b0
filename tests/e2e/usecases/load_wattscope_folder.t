# Without a library beside the parent, the one in wattscope/ wins over the
# search path.
% file board.dat
= board
% copy @TESTLIBS@/usecase/basic/libwattscopestandalone.so wattscope/libwattscopestandalone.so
% env LD_LIBRARY_PATH=@TESTLIBS@/usecase/underscore
< connect --config board.dat hosted
< prodtest --input where.txt
% include banner
>| zelno> zelno> zelno> 
% expect-file double_record.txt
=~ .*
= library=wattscope/libwattscopestandalone.so
=~ .*
