# Parse errors are argtable's own lines, prefixed with the command word; the
# library is not loaded for them. The later successful command shows one
# dependency directory on the search path: only its own load added it.
% file board.dat
= board
% copy @TESTLIBS@/usecase/basic/libwattscopestandalone.so wattscope/libwattscopestandalone.so
% env LD_LIBRARY_PATH=/before
< connect --config board.dat hosted
< wattscope -o f.csv
< wattscope ws
< wattscope -o f.csv -s abc ws
< prodtest
< wattscope -o env.csv ws
% include banner
>| zelno> zelno> zelno> zelno> zelno> zelno> zelno> 
! wattscope: missing option <ws|ws+>
! wattscope: missing option -o|--output=<output>
! wattscope: invalid argument "abc" to option -s|--sampfreq=<int>
! prodtest: missing option -i|--input=<config file>
% expect-file double_record.txt
= wattscope_create 1
= sampfreq=2000
= output=env.csv
= format=csv
= trace_mode=ws
= config=board.dat
= device=unused
= maxoutsize=1024
= range=lo
= duration=0
= trig=0
= saveall=0
= shared_slot=empty
= LD_LIBRARY_PATH=/before:../../../../common/dblnk
= wattscope_destroy 1 runs=1 stops=0 end=self
