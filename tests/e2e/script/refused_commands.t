# A refused command gives 3, above any result, and the lines after it run.
# 0x04 at the start of a line ends the script. The command log and a
# capture's output can't be one file, in either order.
% file board.dat
= board
% copy @TESTLIBS@/usecase/basic/@LIB(wattscopestandalone)@ wattscope/@LIB(wattscopestandalone)@
$ --script -
< wattscope -o ret0.csv ws
< connect --config board.dat hosted
< wattscope -o ret0.csv ws; log --cmd ./ret0.csv
< log --cmd lc.txt
< wattscope -o ./lc.txt ws
< wattscope -o ret1.csv --bogus ws
< wattscope -o ret1.csv ws
< \x04
< help quit
! Session must be connected before running use case
! log: the file './ret0.csv' is the output of a capture on this line
! wattscope: the output file './lc.txt' is the command log
! wattscope: invalid option "--bogus"
% status 3
% expect-file lc.txt
= wattscope -o ./lc.txt ws
= wattscope -o ret1.csv --bogus ws
= wattscope -o ret1.csv ws
