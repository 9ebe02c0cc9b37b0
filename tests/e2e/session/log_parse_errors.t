# Without --cmd, logging starts all the same after the usage; without a file
# it starts with nowhere to write. --help changes nothing. (argtable2 ends
# its message for a missing literal option with an empty line.)
< log --help
< log first.log
< help quit
% include banner
> zelno> Enable logging.
> usage: log -cmd <logfile>
>
> zelno> usage: log -cmd <logfile>
>
> zelno> Exit the interactive tool
>| zelno> 
! log: missing option -c|--cmd
!
% expect-file first.log
= help quit
