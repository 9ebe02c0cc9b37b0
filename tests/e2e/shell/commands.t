# Blanks and separators run nothing; commands are reported whole, words compared
# exactly; use cases need a session; quit acts once the whole line is done.
<
<    
< ; ;
< foo bar
<  foo
< QUIT
< x"a b"
< wattscope -o f.csv;prodtest
< quit;;help
< help
% include banner
>| zelno> zelno> zelno> zelno> zelno> zelno> zelno> zelno> 
% include listing_after_prompt
! Unknown command: foo bar
! Unknown command:  foo
! Unknown command: QUIT
! Unknown command: x"a b"
! Session must be connected before running use case
! Session must be connected before running use case
