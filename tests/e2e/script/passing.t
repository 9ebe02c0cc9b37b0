# Every line ran and no use case failed: status 0. A comment is no command.
$ --script -
< # bogus
< help quit
> Exit the interactive tool
