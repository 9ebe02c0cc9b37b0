# Options are compared whole and case-sensitively; arguments never run as
# commands.
$ -H --HELP --help=1 -hv quit
>   quit          Exit the interactive tool
>   help          List all supported commands or get help on an invidual command
>   connect       Connect to the target
>   disconnect    Disconnect from a target
>   log           Enable logging
>   wattscope     This is simple help for wattscope
>
> For detailed help on a specific command type: help <command>
!| Unknown option -H.Unknown option --HELP.Unknown option --help=1.Unknown option -hv.Unknown option quit.
