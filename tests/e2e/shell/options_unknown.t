# Unknown options are reported without line ends, then one listing follows.
$ -x -y
>   quit          Exit the interactive tool
>   help          List all supported commands or get help on an invidual command
>   connect       Connect to the target
>   disconnect    Disconnect from a target
>   log           Enable logging
>   wattscope     This is simple help for wattscope
>
> For detailed help on a specific command type: help <command>
!| Unknown option -x.Unknown option -y.
