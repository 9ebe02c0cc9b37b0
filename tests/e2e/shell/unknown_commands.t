# The whole command text is reported, blanks and quotes included; words are
# compared exactly.
< foo bar
<  foo
< QUIT
< x"a b"
< help;;quit
> Welcome to zelno interactive tool (v1.0.0.1)
>
> Type 'help' to display top-level help and display a list of commands
> Type 'help <command>' for help with a specific command
>
>
>| zelno> zelno> zelno> zelno> zelno> 
>   quit          Exit the interactive tool
>   help          List all supported commands or get help on an invidual command
>   connect       Connect to the target
>   disconnect    Disconnect from a target
>   log           Enable logging
>   wattscope     This is simple help for wattscope
>
> For detailed help on a specific command type: help <command>
! Unknown command: foo bar
! Unknown command:  foo
! Unknown command: QUIT
! Unknown command: x"a b"
