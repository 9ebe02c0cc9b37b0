% file target.tgcfg
= target
% env LD_LIBRARY_PATH=@TESTLIBS@/tgcfg/fails
< connect --config target.tgcfg hosted
% include banner
>| zelno> zelno> 
! Could not convert TGCFG to Board Config file.
% no-file ws_board.dat
