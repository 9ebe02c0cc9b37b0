# An argtable2 that exports every name only under a leading underscore
# serves all the same.
% env LD_LIBRARY_PATH=@TESTLIBS@/argtable_underscore
% file board.dat
< connect --config board.dat
< log --cmd commands.log
< help quit
% include banner
> zelno> usage: connect --device <device name> [--config <config file>] <prb|hosted>
>
> zelno> zelno> Exit the interactive tool
>| zelno> 
! connect: missing option <hosted|prb>
% expect-file commands.log
= help quit
