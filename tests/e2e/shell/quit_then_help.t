# The loop looks at the quit flag only when the whole line is done.
< quit;help
< help
> Welcome to zelno interactive tool (v1.0.0.1)
>
> Type 'help' to display top-level help and display a list of commands
> Type 'help <command>' for help with a specific command
>
>
> zelno>   quit          Exit the interactive tool
>   help          List all supported commands or get help on an invidual command
>   connect       Connect to the target
>   disconnect    Disconnect from a target
>   log           Enable logging
>   wattscope     This is simple help for wattscope
>
> For detailed help on a specific command type: help <command>
