# help <command> gives the row's own help; an unknown word costs only itself.
# A leading quote groups a word; "quit" help is two commands, and quit acts
# once the whole line is done.
< help quit
< help nosuch quit
< help "quit" help
< "quit" help
% include banner
> zelno> Exit the interactive tool
> zelno> Exit the interactive tool
> zelno> Exit the interactive tool
> List all supported commands or get help on an invidual command
>| zelno> 
% include listing
! Unknown command: nosuch
