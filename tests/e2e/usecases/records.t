# Help (which needs no session and wins over wrong options), parse errors
# and a user's own --config or --device (one too many beside the session's)
# load nothing: the first create of each use case shows the one load that
# added the dependency folder. Then what the library receives, field by
# field, as typed; run results go unreported; a null handle queues nothing,
# silently, and the next command of the line still runs. Strings of 2 to
# 200 bytes arrive whole (the double reads them by their bytes, as the
# library's compiler lays them out), and a reference that a library leaves
# in shared_slot is dropped once, with the record, before the run.
% file board.dat
% copy @TESTLIBS@/usecase/basic/@LIB(wattscopestandalone)@ wattscope/@LIB(wattscopestandalone)@
% env @SEARCHVAR@=@SEARCH(/before)@
< wattscope --help; wattscope -h --bogus -s abc
< prodtest --help --input
< connect --config board.dat --device probe7 hosted
< prodtest -h --input limits.txt; wattscope -o f.csv -h ws
< wattscope -o f.csv
< wattscope ws
< wattscope -o f.csv -s abc ws
< wattscope -o f.csv --config other.dat ws
< wattscope -o f.csv -d mine ws
< prodtest --input limits.txt -c other.dat
< prodtest --input limits.txt --device mine
< wattscope -o env.csv ws; prodtest --input env.txt
< wattscope -o ret1.csv --trig ws; wattscope --saveall -o ret-1.csv ws
< wattscope -s 500 --maxoutsize 7 -f gnuplot -r mid -D -5 --output "my file.csv" ws+
< wattscope -o null.csv ws; prodtest --input null.txt; prodtest -i ret2.txt
< wattscope -o fifteen-bytes.c -f sixteen-byte-fmt -r range-word-of-exactly-30-bytes trace-mode-word-of-exactly-31-b
< connect --config board.dat --device device-name-of-200-bytes-device-name-of-200-bytes-device-name-of-200-bytes-device-name-of-200-bytes-device-name-of-200-bytes-device-name-of-200-bytes-device-name-of-200-bytes-device-name-of-200-bytes- hosted
< wattscope -o slot.csv ws; prodtest --input input-file-of-30-bytes-xyz.txt
% include banner
>| zelno> 
% include wattscope_help
% include wattscope_help
>| zelno> 
% include prodtest_help
>| zelno> zelno> 
% include prodtest_help
% include wattscope_help
>| zelno> zelno> zelno> zelno> zelno> zelno> zelno> zelno> zelno> zelno> zelno> zelno> zelno> zelno> zelno> 
! wattscope: missing option <ws|ws+>
! wattscope: missing option -o|--output=<output>
! wattscope: invalid argument "abc" to option -s|--sampfreq=<int>
! wattscope: excess option -c|--config=board.dat
! wattscope: excess option -d|--device=probe7
! prodtest: excess option -c|--config=board.dat
! prodtest: excess option -d|--device=probe7
% expect-file double_record.txt
= wattscope_create 1 sampfreq=2000 output=env.csv format=csv trace_mode=ws config=board.dat device=probe7 maxoutsize=1024 range=lo duration=0 trig=0 saveall=0 shared_slot=empty
= @SEARCHVAR@=@SEARCH(/before:../../../../common/dblnk)@
= prodtest_create 2 input=env.txt config=board.dat device=probe7
= @SEARCHVAR@=@SEARCH(/before:../../../../common/dblnk:../../../../common/dblnk)@
= wattscope_destroy 1 runs=1 stops=0 end=self
= prodtest_destroy 2 runs=1 stops=0 end=self
= wattscope_create 3 sampfreq=2000 output=ret1.csv format=csv trace_mode=ws config=board.dat device=probe7 maxoutsize=1024 range=lo duration=0 trig=1 saveall=0 shared_slot=empty
= wattscope_create 4 sampfreq=2000 output=ret-1.csv format=csv trace_mode=ws config=board.dat device=probe7 maxoutsize=1024 range=lo duration=0 trig=0 saveall=1 shared_slot=empty
= wattscope_destroy 3 runs=1 stops=0 end=self
= wattscope_destroy 4 runs=1 stops=0 end=self
= wattscope_create 5 sampfreq=500 output=my file.csv format=gnuplot trace_mode=ws+ config=board.dat device=probe7 maxoutsize=7 range=mid duration=-5 trig=0 saveall=0 shared_slot=empty
= wattscope_destroy 5 runs=1 stops=0 end=self
=~ wattscope_create null .*
= prodtest_create null input=null.txt config=board.dat device=probe7
= prodtest_create 6 input=ret2.txt config=board.dat device=probe7
= prodtest_destroy 6 runs=1 stops=0 end=self
= wattscope_create 7 sampfreq=2000 output=fifteen-bytes.c format=sixteen-byte-fmt trace_mode=trace-mode-word-of-exactly-31-b config=board.dat device=probe7 maxoutsize=1024 range=range-word-of-exactly-30-bytes duration=0 trig=0 saveall=0 shared_slot=empty
= wattscope_destroy 7 runs=1 stops=0 end=self
= wattscope_create 8 sampfreq=2000 output=slot.csv format=csv trace_mode=ws config=board.dat device=device-name-of-200-bytes-device-name-of-200-bytes-device-name-of-200-bytes-device-name-of-200-bytes-device-name-of-200-bytes-device-name-of-200-bytes-device-name-of-200-bytes-device-name-of-200-bytes- maxoutsize=1024 range=lo duration=0 trig=0 saveall=0 shared_slot=empty
= shared_slot released
= prodtest_create 9 input=input-file-of-30-bytes-xyz.txt config=board.dat device=device-name-of-200-bytes-device-name-of-200-bytes-device-name-of-200-bytes-device-name-of-200-bytes-device-name-of-200-bytes-device-name-of-200-bytes-device-name-of-200-bytes-device-name-of-200-bytes-
= wattscope_destroy 8 runs=1 stops=0 end=self
= prodtest_destroy 9 runs=1 stops=0 end=self
