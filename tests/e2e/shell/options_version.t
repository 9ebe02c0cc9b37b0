# The version comes after any help, whatever the order of the arguments.
$ -v --help
% include listing
> zelno 1.0.0.1
