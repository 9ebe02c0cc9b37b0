# A library without the function, and one whose conversion fails.
% file target.tgcfg
= target
% env LD_LIBRARY_PATH=@TESTLIBS@/tgcfg/no_function:@TESTLIBS@/tgcfg/fails
< connect --config target.tgcfg hosted
% include banner
>| zelno> zelno> 
! Function TGCFGToBoardConfigFile not found
% no-file ws_board.dat
