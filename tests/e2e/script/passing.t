# Status 0. A comment is no command; a byte-order mark before the first line
# is skipped; a last line runs without a line feed, also one of 1023
# characters that ends in a carriage return.
$ --script -
< \xEF\xBB\xBF# bogus
<| help                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                                       quit\r
> Exit the interactive tool
