# A line whose first byte is 0x04 ends the shell; nothing after it runs.
< \x04help
< help
> Welcome to zelno interactive tool (v1.0.0.1)
>
> Type 'help' to display top-level help and display a list of commands
> Type 'help <command>' for help with a specific command
>
>
>| zelno> 
