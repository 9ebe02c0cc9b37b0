# A refused command gives 3, above any result, and the lines after it run.
# 0x04 at the start of a line ends the script.
% file board.dat
= board
% copy @TESTLIBS@/usecase/basic/@LIB(wattscopestandalone)@ wattscope/@LIB(wattscopestandalone)@
$ --script -
< wattscope -o ret0.csv ws
< connect --config board.dat hosted
< wattscope -o ret1.csv --bogus ws
< wattscope -o ret1.csv ws
< \x04
< help quit
! Session must be connected before running use case
! wattscope: invalid option "--bogus"
% status 3
