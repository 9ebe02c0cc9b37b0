# The whole command text is reported, blanks and quotes included; words are
# compared exactly.
< foo bar
<  foo
< QUIT
< x"a b"
< help;;quit
% include banner
>| zelno> zelno> zelno> zelno> zelno> 
% include listing
! Unknown command: foo bar
! Unknown command:  foo
! Unknown command: QUIT
! Unknown command: x"a b"
