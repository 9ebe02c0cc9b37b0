# The README's session with the build's probe simulator. A timed capture waits
# for zelno's stop, so zelno's "Stopping" line always comes before the summary.
% copy @SOURCE@/demo/board.dat
% copy @SOURCE@/demo/limits.txt
% unset @SEARCHVAR@
< connect --config board.dat hosted
< wattscope -o capture.csv -D 3000 ws
< wattscope -o trace.dat -f gnuplot -D 2000 ws+
< prodtest --input limits.txt
% include banner
>| zelno> zelno> 
> Stopping wattscope after 3000ms
>~ wattscope: capture\.csv: 6000 samples in 3\.000 s \(duration reached\), mean 2\.\d+ mA, peak 1\d\.\d+ mA, charge [\d.]+ mC, energy [\d.]+ mJ, \d+ dropped
>| zelno> 
> Stopping wattscope after 2000ms
>~ wattscope: trace\.dat: 4000 samples in 2\.000 s \(duration reached\), mean 2\.\d+ mA, peak 1\d\.\d+ mA, charge [\d.]+ mC, energy [\d.]+ mJ, \d+ dropped; energy by function: radio_send [\d.]+ mJ, (?:\w+ [\d.]+ mJ, ){3}\w+ [\d.]+ mJ; table in trace\.dat\.functions\.csv
>| zelno> 
>~ prodtest: supply_voltage 3\.\d+ V, expected 3\.299 V \+/- 0\.5%: PASS
>~ prodtest: mean_current 2\.\d+ mA, expected 2\.47 mA \+/- 3%: PASS
>~ prodtest: sleep_current 1\d\.\d+ uA, expected 15 uA \+/- 1 uA: PASS
>~ prodtest: active_current 8\.\d+ mA, expected 8\.19 mA \+/- 3%: PASS
>~ prodtest: peak_current 1\d\.\d+ mA, expected 17\.5 mA \+/- 8%: PASS
>~ prodtest: mean_power 8\.\d+ mW, expected 8\.12 mW \+/- 3%: PASS
>~ prodtest: cycle_energy 0\.8\d+ mJ, expected 0\.812 mJ \+/- 3%: PASS
> prodtest: PASS, 7 of 7 parameters within limits (report limits.junit.xml)
>| zelno> 
% expect-file capture.csv
= sample,time_s,current_A,voltage_V,power_W,energy_J,clipped
=~ 0,0\.0000,0\.0000\d{5},3\.\d{6},0\.\d{9},0\.\d{9},0\n1,0\.0005,.*
% expect-file trace.dat
= # Probe simulator capture of demo-sensor-node (board.dat)
= # 2000 samples/s, range lo (full scale 50 mA, resolution 1 nA), trace mode ws+
= # columns: 1:sample 2:time_s 3:current_A 4:voltage_V 5:power_W 6:energy_J 7:clipped 8:pc 9:function
=~ 0 0\.0000 0\.0000\d{5} 3\.\d{6} 0\.\d{9} 0\.\d{9} 0 0x080004[0-3][0-9a-f] idle_wfi\n.*
% expect-file limits.junit.xml
= <?xml version="1.0" encoding="UTF-8"?>
= <testsuites name="prodtest" tests="7" failures="0" errors="0" time="2.000">
=~ .*
