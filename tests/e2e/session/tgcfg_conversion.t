# Each connect with a target file extends the search path by the two
# directories and converts anew into ws_board.dat.
% file target.tgcfg
= target
% env LD_LIBRARY_PATH=@TESTLIBS@/tgcfg/ok
< connect --config target.tgcfg hosted
< connect --config target.tgcfg hosted
< prodtest
% include banner
>| zelno> zelno> zelno> zelno> 
! prodtest: missing option -i|--input=<config file>
% expect-file ws_board.dat
= converted target.tgcfg
= search @TESTLIBS@/tgcfg/ok:../../../../common/bin:../../../../common/dblnk:../../../../common/bin:../../../../common/dblnk
