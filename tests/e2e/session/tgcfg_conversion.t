# Each connect with a target file extends the search path by the two
# directories and converts anew into ws_board.dat, which use cases then get.
% file target.tgcfg
% copy @TESTLIBS@/usecase/basic/libwattscopestandalone.so wattscope/libwattscopestandalone.so
% env LD_LIBRARY_PATH=@TESTLIBS@/tgcfg/ok
< connect --config target.tgcfg hosted
< connect --config target.tgcfg hosted
< prodtest -i limits.txt
% include banner
>| zelno> zelno> zelno> zelno> 
% expect-file ws_board.dat
= converted target.tgcfg
= search @TESTLIBS@/tgcfg/ok:../../../../common/bin:../../../../common/dblnk:../../../../common/bin:../../../../common/dblnk
% expect-file double_record.txt
= prodtest_create 1 input=limits.txt config=ws_board.dat device=unused
= prodtest_destroy 1 runs=1 stops=0 end=self
