# A user's own --config or --device stands beside the session's and is one
# too many: the parse fails, and nothing reaches the library.
% file board.dat
= board
% copy @TESTLIBS@/usecase/basic/libwattscopestandalone.so wattscope/libwattscopestandalone.so
< connect --config board.dat hosted
< wattscope -o f.csv --config other.dat ws
< wattscope -o f.csv -d mine ws
< prodtest --input limits.txt -c other.dat
< prodtest --input limits.txt --device mine
% include banner
>| zelno> zelno> zelno> zelno> zelno> zelno> 
! wattscope: excess option -c|--config=board.dat
! wattscope: excess option -d|--device=unused
! prodtest: excess option -c|--config=board.dat
! prodtest: excess option -d|--device=unused
% no-file double_record.txt
