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
> Welcome to zelno interactive tool (v1.0.0.1)
>
> Type 'help' to display top-level help and display a list of commands
> Type 'help <command>' for help with a specific command
>
>
> zelno> zelno> zelno> zelno> Usage: disconnect
>| zelno> zelno> zelno> zelno> 
! prodtest: missing option -i|--input=<config file>
! Session must be connected before running use case
