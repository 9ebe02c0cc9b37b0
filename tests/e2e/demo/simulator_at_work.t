# The simulator behind zelno's other ways in: a target file converted by
# libtgcfgsetup.so and sampled, wrong options refused by the library with
# nothing queued, and Ctrl+C ending a capture that has no time limit.
% copy @SOURCE@/demo/target.tgcfg
% file broken.tgcfg
= [target]
= supply = 3.3 volts
% unset LD_LIBRARY_PATH
< connect --config broken.tgcfg hosted
< connect --config target.tgcfg hosted
< wattscope -o short.csv -s 1000 -D 200 ws; wattscope -o short.csv ws+
< wattscope -o never.csv -f json ws
< wattscope -o long.csv -s 5000 ws
% await short.csv: 
% sleep 300
% signal INT
% include banner
>| zelno> zelno> zelno> 
> Stopping wattscope after 200ms
>~ wattscope: short\.csv: 200 samples in 0\.200 s \(duration reached\), .*
>| zelno> zelno> 
>~ wattscope: long\.csv: \d+ samples in [\d.]+ s \(stopped\), .*
>| zelno> 
! tgcfgsetup: broken.tgcfg:2: supply needs a unit: V, mV or uV, not '3.3 volts'
! Could not convert TGCFG to Board Config file.
! wattscope: the output file 'short.csv' is already the output of another capture
! wattscope: unknown format 'json'; use csv or gnuplot
% expect-file ws_board.dat
=~ # Board configuration of demo-sensor-node, made from target\.tgcfg\.\n.*\nmode sleep 15000 70000 idle_wfi:10000\n.*
% no-file never.csv
