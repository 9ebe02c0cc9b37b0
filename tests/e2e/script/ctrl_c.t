# Ctrl+C stops a running use case, as in the shell, and gives 2; the
# script goes on.
% file board.dat
= board
% copy @TESTLIBS@/usecase/basic/@LIB(wattscopestandalone)@ wattscope/@LIB(wattscopestandalone)@
$ --script -
< connect --config board.dat hosted
< wattscope -o wait_say.csv ws
% await wattscope 1 running
% signal INT
< wattscope -o ret0.csv ws
> wattscope 1 running
% status 2
