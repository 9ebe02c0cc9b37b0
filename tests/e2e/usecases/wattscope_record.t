# What the library receives, field by field: the defaults, each flag on its
# own, and values as typed, which nobody checks (a negative duration is no
# time limit, and reaches the library all the same).
% file board.dat
= board
% copy @TESTLIBS@/usecase/basic/libwattscopestandalone.so wattscope/libwattscopestandalone.so
< connect --config board.dat --device probe7 hosted
< wattscope -o f.csv ws
< wattscope -o f.csv --trig ws
< wattscope --saveall -o f.csv ws
< wattscope -s 500 --maxoutsize 7 -f gnuplot -r mid -D -5 --output "my file.csv" ws+
% include banner
>| zelno> zelno> zelno> zelno> zelno> zelno> 
% expect-file double_record.txt
= wattscope_create 1
= sampfreq=2000
= output=f.csv
= format=csv
= trace_mode=ws
= config=board.dat
= device=probe7
= maxoutsize=1024
= range=lo
= duration=0
= trig=0
= saveall=0
= shared_slot=empty
= wattscope_destroy 1 runs=1 stops=0 end=self
= wattscope_create 2
=~ .*
= trig=1
= saveall=0
= shared_slot=empty
= wattscope_destroy 2 runs=1 stops=0 end=self
= wattscope_create 3
=~ .*
= trig=0
= saveall=1
= shared_slot=empty
= wattscope_destroy 3 runs=1 stops=0 end=self
= wattscope_create 4
= sampfreq=500
= output=my file.csv
= format=gnuplot
= trace_mode=ws+
= config=board.dat
= device=probe7
= maxoutsize=7
= range=mid
= duration=-5
= trig=0
= saveall=0
= shared_slot=empty
= wattscope_destroy 4 runs=1 stops=0 end=self
