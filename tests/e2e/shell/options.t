# Options are compared whole and case-sensitively and never run as commands;
# repeated help and version requests give one listing, then one version line.
$ -v -H -h --HELP --help --help=1 -hv --version quit
% include listing
> zelno 1.0.0.1
!| Unknown option -H.Unknown option --HELP.Unknown option --help=1.Unknown option -hv.Unknown option quit.
