# Without wattscope_destroy the made handle can't be given back; the error
# names the path beside the parent when the library came from there.
% mkdir run
% cd run
% file run/board.dat
= board
% copy @TESTLIBS@/usecase/no_wattscope_destroy/libwattscopestandalone.so libwattscopestandalone.so
< connect --config board.dat hosted
< wattscope -o f.csv ws
< prodtest --input limits.txt
% include banner
>| zelno> zelno> zelno> zelno> 
! Function wattscope_destroy not found in ../libwattscopestandalone.so
% expect-file run/double_record.txt
= wattscope_create 1
=~ .*
= shared_slot=empty
= prodtest_create 2
= input=limits.txt
= config=board.dat
= device=unused
= prodtest_destroy 2 runs=1 stops=0 end=self
