# A conversion library without the function.
% file target.tgcfg
% env LD_LIBRARY_PATH=@TESTLIBS@/tgcfg/no_function
< connect --config target.tgcfg hosted
% include banner
>| zelno> zelno> 
! Function TGCFGToBoardConfigFile not found
% no-file ws_board.dat
