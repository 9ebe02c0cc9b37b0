# Repeated help requests give one listing.
$ -h -h --help
% include listing
