# Ctrl+C at the prompt shows nothing and the shell reads on.
% await zelno> 
% signal INT
% sleep 50
% signal INT
% sleep 50
< 
% include banner
>| zelno> zelno> 
