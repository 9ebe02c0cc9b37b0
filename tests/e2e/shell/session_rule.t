# Use cases need a session, unless the command asks for help.
< wattscope -o f.csv ws
< prodtest --input limits.txt
< wattscope;prodtest
% include banner
>| zelno> zelno> zelno> zelno> 
! Session must be connected before running use case
! Session must be connected before running use case
! Session must be connected before running use case
! Session must be connected before running use case
