# The README session on the package's own files: @SOURCE@ stands for its
# share/zelno, and zelno finds the simulator through its RUNPATH alone.
# zelno's "Stopping" line and the simulator's summary race to the end, so
# the first may come on either side of the second.
% copy @SOURCE@/demo/board.dat
% copy @SOURCE@/demo/limits.txt
% unset LD_LIBRARY_PATH
< connect --config board.dat hosted
< wattscope -o capture.csv -D 500 ws
< prodtest --input limits.txt
< quit
% include banner
>| zelno> zelno> 
>~ (?:Stopping wattscope after 500ms\n)?wattscope: capture\.csv: \d+ samples in [\d.]+ s \((?:duration reached|stopped)\), mean 2\.\d+ mA, [^\n]*(?:\nStopping wattscope after 500ms)?
>| zelno> 
>~ (?:prodtest: \w+ [\d.]+ \w+, expected [^\n]*: PASS\n){6}prodtest: cycle_energy [^\n]*: PASS
> prodtest: PASS, 7 of 7 parameters within limits (report limits.junit.xml)
>| zelno> 
% expect-file capture.csv
= sample,time_s,current_A,voltage_V,power_W,energy_J,clipped
=~ 0,0\.0000,.*
