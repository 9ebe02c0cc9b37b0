# Every line ran and every use case returned 0: status 0.
% file board.dat
= board
% copy @TESTLIBS@/usecase/basic/libwattscopestandalone.so wattscope/libwattscopestandalone.so
$ --script -
< # bogus
< connect --config board.dat hosted
< wattscope -o ret0.csv ws
