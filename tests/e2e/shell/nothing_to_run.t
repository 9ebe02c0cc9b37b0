# Empty lines, blanks and bare separators run nothing.
<
<    
< ;;
< ; ;
% include banner
>| zelno> zelno> zelno> zelno> zelno> 
