# A session on a PPK2: what a PPK2 can't do is refused at create, with the
# reason, before any device is looked for, and nothing is written.
% copy @SOURCE@/demo/board.dat
% unset @SEARCHVAR@
< connect --device ppk2:/dev/ttyACM0 --config board.dat hosted
< wattscope -o a.csv -s 100001 ws
< wattscope -o a.csv ws+
< wattscope -o a.csv -t ws
% include banner
>| zelno> zelno> zelno> zelno> zelno> 
! wattscope: sample rate 100001 is out of range; use 1 to 100000 samples per second
! wattscope: trace mode ws+ on a PPK2 needs the firmware's marks: add 'marker <code> <name>' lines to board.dat, or use ws
! wattscope: --trig waits for the hardware trigger, and board.dat wires none (no trigger_input)
% no-file a.csv
