# Only ".dat" and ".tgcfg" (exactly, in lower case) are session files. The
# session is recorded before the test, so it stands afterwards.
% file nodot
= x
% file trailing.
= x
% file dir.d/file
= x
% file board.DAT
= x
% file target.Tgcfg
= x
< connect --config nodot hosted
< connect --config trailing. hosted
< connect --config dir.d/file hosted
< connect --config board.DAT hosted
< connect --config target.Tgcfg hosted
< prodtest
% include banner
>| zelno> zelno> zelno> zelno> zelno> zelno> zelno> 
! Incorrect connection file nodot. Must be a .dat or .tgcfg.
! Incorrect connection file trailing.. Must be a .dat or .tgcfg.
! Incorrect connection file dir.d/file. Must be a .dat or .tgcfg.
! Incorrect connection file board.DAT. Must be a .dat or .tgcfg.
! Incorrect connection file target.Tgcfg. Must be a .dat or .tgcfg.
! prodtest: missing option -i|--input=<config file>
