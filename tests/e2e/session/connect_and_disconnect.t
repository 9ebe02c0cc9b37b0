# connect records the file and the device ("unused" unless given, also as
# an empty parse error) that use cases get, silently, whatever the connection
# word; after a parse error it goes on. --help, a file that can't be opened (a
# directory can't) and a missing --config (an empty name) keep the session.
# disconnect with a word only prints its usage; a plain one ends the session
# silently, also when there is none. Only ".dat" and ".tgcfg", exactly, are
# session files; the session is recorded before that test, so it stands.
# Each connect with a target file extends the search path by two folders and
# converts anew into ws_board.dat, which use cases then get; the converter
# gets both names whole, and the longer one in a heap block it can free.
% program bin/zelno
% env @SEARCHVAR@=@SEARCH(@TESTLIBS@/tgcfg/ok)@
% file target.tgcfg
% file demo-sensor-node-target-of-forty-b.tgcfg
% file board.dat
% file other.dat
% file nodot
% file dir.dat/file
% file board.DAT
% file target.Tgcfg
% copy @TESTLIBS@/usecase/basic/@LIB(wattscopestandalone)@ wattscope/@LIB(wattscopestandalone)@
< disconnect
< connect --config board.dat hosted
< prodtest -i b.txt
< connect -c other.dat -d probe7 anything
< prodtest -i c.txt
< connect --config board.dat --device= prb
< prodtest -i d.txt
< connect --config board.dat -d first hosted
< connect --config missing.dat hosted
< connect --config dir.dat hosted
< connect --help --config missing.dat
< connect -d second hosted
< prodtest -i e.txt
< connect --config other.dat
< disconnect now
< prodtest -i f.txt
< disconnect
< prodtest -i g.txt
< connect --config nodot hosted
< connect --config dir.dat/file hosted
< connect --config board.DAT hosted
< connect --config target.Tgcfg hosted
< prodtest -i h.txt
< connect --config target.tgcfg hosted
< connect --config demo-sensor-node-target-of-forty-b.tgcfg hosted
< prodtest -i i.txt
% include banner
> zelno> zelno> zelno> zelno> zelno> zelno> usage: connect --device <device name> [--config <config file>] <prb|hosted>
>
> zelno> zelno> zelno> zelno> zelno> Connect to the target.
> usage: connect --device <device name> [--config <config file>] <prb|hosted>
>
> zelno> usage: connect --device <device name> [--config <config file>] <prb|hosted>
>
> zelno> zelno> usage: connect --device <device name> [--config <config file>] <prb|hosted>
>
> zelno> Usage: disconnect
>| zelno> zelno> zelno> zelno> zelno> zelno> zelno> zelno> zelno> zelno> zelno> zelno> 
! connect: option "--device=" requires an argument
! prodtest: option "" requires an argument
! Could not open file missing.dat
! Could not open file dir.dat
! connect: missing option -c|--config=<config file>
! Could not open file 
! connect: missing option <hosted|prb>
! Session must be connected before running use case
! Incorrect connection file nodot. Must be a .dat or .tgcfg.
! Incorrect connection file dir.dat/file. Must be a .dat or .tgcfg.
! Incorrect connection file board.DAT. Must be a .dat or .tgcfg.
! Incorrect connection file target.Tgcfg. Must be a .dat or .tgcfg.
% expect-file double_record.txt
= prodtest_create 1 input=b.txt config=board.dat device=unused
= prodtest_destroy 1 runs=1 stops=0 end=self
= prodtest_create 2 input=c.txt config=other.dat device=probe7
= prodtest_destroy 2 runs=1 stops=0 end=self
= prodtest_create 3 input=e.txt config=board.dat device=first
= prodtest_destroy 3 runs=1 stops=0 end=self
= prodtest_create 4 input=f.txt config=other.dat device=unused
= prodtest_destroy 4 runs=1 stops=0 end=self
= prodtest_create 5 input=h.txt config=target.Tgcfg device=unused
= prodtest_destroy 5 runs=1 stops=0 end=self
= prodtest_create 6 input=i.txt config=ws_board.dat device=unused
= prodtest_destroy 6 runs=1 stops=0 end=self
% expect-file ws_board.dat
= converted demo-sensor-node-target-of-forty-b.tgcfg
= search @SEARCH(@TESTLIBS@/tgcfg/ok:../../../../common/dblnk:../../../../common/bin:../../../../common/dblnk:../../../../common/bin:../../../../common/dblnk)@
