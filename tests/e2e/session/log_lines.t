# The log line itself is not logged; every later line is, whole, empty and
# unknown ones too. The file is emptied first. A second log keeps the first
# file and neither creates nor empties the one it names.
% file session.log
= old content
% file other.log
= other content
< log --cmd session.log
< help quit;  nosuch
<
< log --cmd other.log
< quit
% include banner
> zelno> zelno> Exit the interactive tool
>| zelno> zelno> zelno> 
! Unknown command:   nosuch
% expect-file session.log
= help quit;  nosuch
=
= log --cmd other.log
= quit
% expect-file other.log
= other content
