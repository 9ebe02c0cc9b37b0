# help <command> gives the row's own help, prodtest included; unknown words
# cost only themselves.
< help quit
< help prodtest
< help wattscope quit
< help nosuch quit
< help -h --help
< help "quit" help
< "help" quit
# (the quote cuts the line: "help" and " quit" are two commands)
% include banner
> zelno> Exit the interactive tool
>| zelno> 
% include prodtest_help
>| zelno> 
% include wattscope_help
> Exit the interactive tool
> zelno> Exit the interactive tool
> zelno> zelno> Exit the interactive tool
> List all supported commands or get help on an invidual command
% include listing_after_prompt
! Unknown command: nosuch
! Unknown command: -h
! Unknown command: --help
