# Empty lines, blanks and bare separators run nothing.
<
<    
< ;;
< ; ;
> Welcome to zelno interactive tool (v1.0.0.1)
>
> Type 'help' to display top-level help and display a list of commands
> Type 'help <command>' for help with a specific command
>
>
>| zelno> zelno> zelno> zelno> zelno> 
