# A script that the shell runs from its first line: no banner, no prompts,
# comment lines skipped, a carriage return before the line feed dropped.
# A failing production test gives 1, and the lines after it still run: a
# description that Notepad saved, with a byte-order mark (U+FEFF, before
# 'measure'), naming its report.
% copy @SOURCE@/demo/board.dat board.dat
% file production.zelno
= #!/usr/bin/env -S zelno --script
=   # The node's current, far from what it draws.
= connect --config board.dat hosted
= prodtest --input too_high.txt
= prodtest --input notepad.txt
= help quit\r

% file too_high.txt
= measure 0.2 s
= mean_current 9.99 3% mA

% file notepad.txt
= ﻿measure 0.2 s
= report elsewhere.xml
= supply_voltage 3.3 1% V

$ --script production.zelno
>~ prodtest: mean_current .* mA, expected 9.99 mA \+/- 3%: FAIL
>~ prodtest: FAIL, 1 of 1 parameters out of limits .*
>~ prodtest: supply_voltage .* V, expected 3.3 V \+/- 1%: PASS
> prodtest: PASS, 1 of 1 parameters within limits (report elsewhere.xml)
> Exit the interactive tool
% status 1
% expect-file elsewhere.xml
=~ .*<system-out>measured .* V, expected 3.3 V \+/- 1% \(3.267 to 3.333 V\)</system-out>.*
% no-file notepad.junit.xml
