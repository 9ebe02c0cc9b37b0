# log --help changes nothing. Without a file, log turns logging on with
# nowhere to write; without --cmd, on all the same after the usage, and a
# file then named starts the recording, emptied first. A later log keeps that
# file, and neither makes nor empties the one it names. Every line after the
# log line is logged, whole. This argtable2 exports only "_"-prefixed names.
% program bin/zelno
% env @SEARCHVAR@=@SEARCH(@TESTLIBS@/argtable_underscore)@
% copy @TESTLIBS@/argtable_underscore/@LIB(argtable2,0)@ bin/@LIB(argtable2,0)@
% file first.log
= old content
% file other.log
= other content
< log --help
< log --cmd
< help quit
< log first.log
< help quit;  nosuch
<
< log --cmd other.log
< log --cmd new.log
< quit
% include banner
> zelno> Enable logging.
> usage: log -cmd <logfile>
>
> zelno> usage: log -cmd <logfile>
>
> zelno> Exit the interactive tool
> zelno> usage: log -cmd <logfile>
>
> zelno> Exit the interactive tool
>| zelno> zelno> zelno> zelno> 
! log: missing option <file>
! log: missing option -c|--cmd
!
! Unknown command:   nosuch
% expect-file first.log
= help quit;  nosuch
=
= log --cmd other.log
= log --cmd new.log
= quit
% expect-file other.log
= other content
% no-file new.log
