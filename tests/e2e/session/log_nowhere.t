# A log with no file turns logging on with nowhere to write; a later log with
# a file starts recording there.
< log --cmd
< help quit
< log --cmd later.log
< help help
% include banner
> zelno> usage: log -cmd <logfile>
>
> zelno> Exit the interactive tool
> zelno> zelno> List all supported commands or get help on an invidual command
>| zelno> 
! log: missing option <file>
% expect-file later.log
= help help
