% file target.tgcfg
= target
% env LD_LIBRARY_PATH=@TESTLIBS@/tgcfg/fails
< connect --config target.tgcfg hosted
> Welcome to zelno interactive tool (v1.0.0.1)
>
> Type 'help' to display top-level help and display a list of commands
> Type 'help <command>' for help with a specific command
>
>
>| zelno> zelno> 
! Could not convert TGCFG to Board Config file.
% no-file ws_board.dat
