# A converted target file sampled (-D counted from the 250 ms trigger), wrong
# options refused with nothing queued, and Ctrl+C ending an unlimited capture.
% copy @SOURCE@/demo/target.tgcfg
% copy @SOURCE@/demo/target.tgcfg demo-sensor-node-target-of-forty-b.tgcfg
% file broken.tgcfg
= [target]
= supply = 3.3 volts
% unset @SEARCHVAR@
< connect --config broken.tgcfg hosted
< connect --config target.tgcfg hosted
< connect --config demo-sensor-node-target-of-forty-b.tgcfg hosted
< wattscope -o never.csv -f json ws; wattscope -o never.csv --maxoutsize 0 ws
< wattscope -o ws_board.dat ws
< wattscope -o short.csv -s 1000 -D 200 -t ws; wattscope -o short.csv ws+
< wattscope -o long.csv -s 5000 ws
% await short.csv: 
% sleep 1000
% signal INT
% include banner
>| zelno> zelno> zelno> zelno> zelno> zelno> 
> Stopping wattscope after 200ms
>~ wattscope: short\.csv: 200 samples in 0\.200 s \(duration reached\), .*
>| zelno> 
>~ wattscope: long\.csv: \d+ samples in [\d.]+ s \(stopped\), .*
>| zelno> 
! tgcfgsetup: broken.tgcfg:2: supply needs a unit: V, mV or uV, not '3.3 volts'
! Could not convert TGCFG to Board Config file.
! wattscope: unknown format 'json'; use csv or gnuplot
! wattscope: maximum output size 0 is out of range; give a size in MiB above 0
! wattscope: the output file 'ws_board.dat' is the board configuration
! wattscope: the output file 'short.csv' is already the output of another capture
! wattscope: note: long.csv keeps the last 2000 s of samples (range lo); --saveall keeps them all
% expect-file ws_board.dat
=~ # Board configuration of demo-sensor-node, made from demo-sensor-node-target-of-forty-b\.tgcfg\.\n.*\nmode sleep 15000 70000 idle_wfi:10000\n.*
% no-file never.csv
