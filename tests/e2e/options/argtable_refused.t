# An argtable2 that lacks arg_dbln, which no command calls, is refused all
# the same, at every command that parses options and each time anew. The
# text has no line end of its own. Commands without options work as usual.
% program bin/zelno
% env @SEARCHVAR@=@SEARCH(@TESTLIBS@/argtable_no_dbln)@
% copy @TESTLIBS@/argtable_no_dbln/@LIB(argtable2,0)@ bin/@LIB(argtable2,0)@
< connect --device dev --config board.dat hosted
< log --cmd commands.log
< disconnect
< help quit
< connect --device dev --config board.dat hosted
% include banner
> zelno> zelno> zelno> zelno> Exit the interactive tool
>| zelno> zelno> 
!| Symbol not found in @LIB(argtable2,0)@: arg_dblnSymbol not found in @LIB(argtable2,0)@: arg_dblnSymbol not found in @LIB(argtable2,0)@: arg_dbln
% no-file commands.log
