# Ctrl+C at the prompt shows nothing and the shell reads on. During a line it
# stops all its use cases, timed or not, without a message: the two here run
# side by side, the second starting while the first waits for its stop. -D
# limits a run: the queue stops it and says so, in the order of the ends.
# Limits count the waits made, not a clock: a wait that comes back early
# counts whole (else the last line takes 100 s). 0 or less is no limit.
% file board.dat
% copy @TESTLIBS@/usecase/basic/@LIB(wattscopestandalone)@ wattscope/@LIB(wattscopestandalone)@
% await zelno> 
% signal INT
% sleep 50
< connect --config board.dat hosted
< prodtest --input wait.txt; wattscope -o wait_say.csv -D 60000 ws
% await wattscope 2 running
% signal INT
< wattscope -o wait.csv -D 10 ws; wattscope -o wait.csv -D 25 ws; wattscope -o wait.csv -D 20 ws
< wattscope -o ms200.csv -D -5 ws; wattscope -o ms200.csv -D 0 ws; wattscope -o ms20.csv -D 5000 ws
< wattscope -o ms1000.csv -D 100000 ws; wattscope -o wait.csv -D 100010 ws
% include banner
> zelno> zelno> wattscope 2 running
> zelno> Stopping wattscope after 10ms
> Stopping wattscope after 20ms
> Stopping wattscope after 25ms
> zelno> zelno> Stopping wattscope after 100010ms
>| zelno> 
% expect-file double_record.txt
=~ .*
= prodtest_destroy 1 runs=1 stops=1 end=stopped
= wattscope_destroy 2 runs=1 stops=1 end=stopped
=~ .*
