# Status 0. A comment is no command; a last line runs without a line feed.
$ --script -
< # bogus
<| help quit
> Exit the interactive tool
