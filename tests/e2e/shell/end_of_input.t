# A last line without a line feed is dropped; one with a line feed runs and
# the shell ends at the next read.
< help
<| help
% include banner
% include listing_after_prompt
>| zelno> 
