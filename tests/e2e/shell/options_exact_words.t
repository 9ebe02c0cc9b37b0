# Options are compared whole and case-sensitively; arguments never run as
# commands.
$ -H --HELP --help=1 -hv quit
% include listing
!| Unknown option -H.Unknown option --HELP.Unknown option --help=1.Unknown option -hv.Unknown option quit.
