# A failed conversion writes no board file and leaves the session on the
# target file, which use cases then get.
% file target.tgcfg
% copy @TESTLIBS@/usecase/basic/libwattscopestandalone.so wattscope/libwattscopestandalone.so
% env LD_LIBRARY_PATH=@TESTLIBS@/tgcfg/fails
< connect --config target.tgcfg -d dev hosted
< prodtest -i limits.txt
% include banner
>| zelno> zelno> zelno> 
! Could not convert TGCFG to Board Config file.
% no-file ws_board.dat
% expect-file double_record.txt
= prodtest_create 1 input=limits.txt config=target.tgcfg device=dev
= prodtest_destroy 1 runs=1 stops=0 end=self
