# File names are the bytes the script gives, on Windows too (not its ANSI
# code page): a script, a board file, a capture and a command log named in
# UTF-8 keep those names on disk and in the summary.
% copy @SOURCE@/demo/board.dat platine_ä.dat
% file skript_ö.zelno
= log --cmd befehle_ß.log
= connect --config platine_ä.dat hosted
= wattscope -o über.csv -s 1000 -D 100 ws
$ --script skript_ö.zelno
>~ (?:Stopping wattscope after 100ms\n)?wattscope: \xc3\xbcber\.csv: 100 samples in 0\.100 s \(duration reached\), [^\n]*(?:\nStopping wattscope after 100ms)?
% expect-file über.csv
= sample,time_s,current_A,voltage_V,power_W,energy_J,clipped
=~ .*
% expect-file befehle_ß.log
= connect --config platine_\xc3\xa4.dat hosted
= wattscope -o \xc3\xbcber.csv -s 1000 -D 100 ws
