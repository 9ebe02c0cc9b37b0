# The version comes after any help, whatever the order of the arguments.
$ -v --help
>   quit          Exit the interactive tool
>   help          List all supported commands or get help on an invidual command
>   connect       Connect to the target
>   disconnect    Disconnect from a target
>   log           Enable logging
>   wattscope     This is simple help for wattscope
>
> For detailed help on a specific command type: help <command>
> zelno 1.0.0.1
