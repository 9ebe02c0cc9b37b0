# Use cases need a session, unless the command asks for help.
< wattscope -o f.csv ws
< prodtest --input limits.txt
< wattscope;prodtest
> Welcome to zelno interactive tool (v1.0.0.1)
>
> Type 'help' to display top-level help and display a list of commands
> Type 'help <command>' for help with a specific command
>
>
>| zelno> zelno> zelno> zelno> 
! Session must be connected before running use case
! Session must be connected before running use case
! Session must be connected before running use case
! Session must be connected before running use case
