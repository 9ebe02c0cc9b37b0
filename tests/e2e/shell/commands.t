# Blanks and separators run nothing; commands are reported whole, words compared
# exactly. A last line without a line feed is dropped.
<
<    
< ; ;
< foo bar
<  foo
< QUIT
< x"a b"
<| help
% include banner
>| zelno> zelno> zelno> zelno> zelno> zelno> zelno> zelno> 
! Unknown command: foo bar
! Unknown command:  foo
! Unknown command: QUIT
! Unknown command: x"a b"
