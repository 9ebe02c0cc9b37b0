# connect reports parse errors and goes on to the file test. A session is
# shown by prodtest getting as far as its own parse (it needs --input).
% file board.dat
= board
< connect
< prodtest
< connect --config missing.dat hosted
< prodtest
< connect --config board.dat
< prodtest
< connect --help --config missing.dat
< connect -h
< connect --config missing.dat hosted
< prodtest
% include banner
> zelno> usage: connect --device <device name> [--config <config file>] <prb|hosted>
>
> zelno> zelno> zelno> zelno> usage: connect --device <device name> [--config <config file>] <prb|hosted>
>
> zelno> zelno> Connect to the target.
> usage: connect --device <device name> [--config <config file>] <prb|hosted>
>
> zelno> Connect to the target.
> usage: connect --device <device name> [--config <config file>] <prb|hosted>
>
>| zelno> zelno> zelno> 
! connect: missing option -c|--config=<config file>
! connect: missing option <hosted|prb>
! Could not open file 
! Session must be connected before running use case
! Could not open file missing.dat
! Session must be connected before running use case
! connect: missing option <hosted|prb>
! prodtest: missing option -i|--input=<config file>
! Could not open file missing.dat
! prodtest: missing option -i|--input=<config file>
