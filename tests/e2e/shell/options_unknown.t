# Unknown options are reported without line ends, then one listing follows.
$ -x -y
% include listing
!| Unknown option -x.Unknown option -y.
