# -D limits a run: the queue stops it and says so. Two limits on one line
# stop in order of their ends; a run that ends before its limit is not
# stopped; a limit of 0 is none.
% file board.dat
= board
% copy @TESTLIBS@/usecase/basic/libwattscopestandalone.so wattscope/libwattscopestandalone.so
< connect --config board.dat hosted
< wattscope -o wait.csv -D 30 ws
< wattscope -o wait.csv -D 60 ws; wattscope -o wait.csv -D 20 ws
< wattscope -o ms10.csv -D 5000 ws
< wattscope -o ms10.csv -D 0 ws
% include banner
> zelno> zelno> Stopping wattscope after 30ms
> zelno> Stopping wattscope after 20ms
> Stopping wattscope after 60ms
>| zelno> zelno> zelno> 
% expect-file double_record.txt
=~ .*
= wattscope_destroy 1 runs=1 stops=1 end=stopped
=~ .*
= wattscope_destroy 2 runs=1 stops=1 end=stopped
= wattscope_destroy 3 runs=1 stops=1 end=stopped
=~ .*
= wattscope_destroy 4 runs=1 stops=0 end=self
=~ .*
= wattscope_destroy 5 runs=1 stops=0 end=self
