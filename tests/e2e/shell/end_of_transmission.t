# A line whose first byte is 0x04 ends the shell; nothing after it runs.
< \x04help
< help
% include banner
>| zelno> 
