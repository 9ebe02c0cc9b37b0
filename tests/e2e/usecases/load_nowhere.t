# With the use-case library nowhere, each command that needs it tries again,
# says so, and adds the dependency folder to the search once more, as the
# conversion library loaded afterwards sees. A parse error never tries.
% program bin/zelno
% env @SEARCHVAR@=@SEARCH(@TESTLIBS@/tgcfg/ok)@
% file board.dat
% file target.tgcfg
< connect --config board.dat hosted
< wattscope -o f.csv ws
< wattscope -o f.csv ws; prodtest --input limits.txt
< prodtest
< connect --config target.tgcfg hosted
% include banner
>| zelno> zelno> zelno> zelno> zelno> zelno> 
! Unable to load @LIB(wattscopestandalone)@
! Unable to load @LIB(wattscopestandalone)@
! Unable to load @LIB(wattscopestandalone)@
! prodtest: missing option -i|--input=<config file>
% expect-file ws_board.dat
= converted target.tgcfg
= search @SEARCH(@TESTLIBS@/tgcfg/ok:../../../../common/dblnk:../../../../common/dblnk:../../../../common/dblnk:../../../../common/bin:../../../../common/dblnk)@
