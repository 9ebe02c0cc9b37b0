# A script that the shell runs from its first line: no banner, no prompts,
# comment lines skipped, a carriage return before the line feed dropped.
# A failing production test gives 1, and the lines after it still run.
% copy @SOURCE@/demo/board.dat board.dat
% file production.zelno
= #!/usr/bin/env -S zelno --script
=   # The node's current, far from what it draws.
= connect --config board.dat hosted
= prodtest --input too_high.txt
= help quit\r

% file too_high.txt
= measure 0.2 s
= mean_current 9.99 3% mA

$ --script production.zelno
>~ prodtest: mean_current .* mA, expected 9.99 mA \+/- 3%: FAIL
>~ prodtest: FAIL, 1 of 1 parameters out of limits .*
> Exit the interactive tool
% status 1
