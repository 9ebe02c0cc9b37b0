# A .dat file connects silently with any connection word; disconnect with a
# word only prints its usage; a plain disconnect ends the session silently,
# also when there is none.
% file board.dat
= board
< disconnect
< connect --config board.dat hosted
< connect --config board.dat --device probe1 anything
< disconnect now
< prodtest
< disconnect
< prodtest
% include banner
> zelno> zelno> zelno> zelno> Usage: disconnect
>| zelno> zelno> zelno> zelno> 
! prodtest: missing option -i|--input=<config file>
! Session must be connected before running use case
