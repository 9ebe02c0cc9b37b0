# From standard input; the highest status wins: a result other than 0 or 1
# gives 2, above the 1 of the next use case.
% file board.dat
= board
% copy @TESTLIBS@/usecase/basic/@LIB(wattscopestandalone)@ wattscope/@LIB(wattscopestandalone)@
$ --script -
< connect --config board.dat hosted
< wattscope -o ret-1.csv ws
< wattscope -o ret1.csv ws; wattscope -o ret0.csv ws
% status 2
