# Help needs no session, wins over wrong or missing options beside it, and
# neither loads the library nor queues anything: the one load that the last
# commands make, one for each use case, are the first to add the dependency
# folder to the search.
% file board.dat
= board
% copy @TESTLIBS@/usecase/basic/libwattscopestandalone.so wattscope/libwattscopestandalone.so
% env LD_LIBRARY_PATH=/before
< wattscope --help
< wattscope -h --bogus -s abc
< prodtest -h
< prodtest --help --input
< help wattscope prodtest
< connect --config board.dat hosted
< prodtest -h --input limits.txt
< wattscope -o f.csv -h ws
< wattscope -o env.csv ws; prodtest --input env.txt
% include banner
>| zelno> 
> This is advanced help for wattscope
> Options:
> -s|--sampfreq \t The rate at which samples are collected. Default is 2K.(optional)
> -o|--out \t The output file name. The only format supported is csv.(mandatory)
> -D|--duration \t The amount of time in ms that the samples should be collected. 
> \t\t By default the samples will be collected indefinitely until interrupted by Ctrl+C. (optional)
> -t|--trig \t Synchronize with hw trigger (GPIOIN1). This is only applicable to PRB210 standalone probe. (optional)
> -r|--range \t Specify 'lo' (for low range) and 'hi' (for high range). This is only applicable to PRB210 standalone probe with WSPRO add-on. Default is 'lo'. (optional)
> --saveall \t Save all captured data to output file. By default the last ~33 minutes of data is saved for WS-CORE technology and
> \t\t last ~1 minute of data is saved for WSPRO technology due to large data size. (optional)
> -h|--help \t Help
> Argument:
> <ws|ws+> \t [ws] mode is energy samples only. [ws+] mode is energy plus PC samples.
>| zelno> 
> This is advanced help for wattscope
> Options:
> -s|--sampfreq \t The rate at which samples are collected. Default is 2K.(optional)
> -o|--out \t The output file name. The only format supported is csv.(mandatory)
> -D|--duration \t The amount of time in ms that the samples should be collected. 
> \t\t By default the samples will be collected indefinitely until interrupted by Ctrl+C. (optional)
> -t|--trig \t Synchronize with hw trigger (GPIOIN1). This is only applicable to PRB210 standalone probe. (optional)
> -r|--range \t Specify 'lo' (for low range) and 'hi' (for high range). This is only applicable to PRB210 standalone probe with WSPRO add-on. Default is 'lo'. (optional)
> --saveall \t Save all captured data to output file. By default the last ~33 minutes of data is saved for WS-CORE technology and
> \t\t last ~1 minute of data is saved for WSPRO technology due to large data size. (optional)
> -h|--help \t Help
> Argument:
> <ws|ws+> \t [ws] mode is energy samples only. [ws+] mode is energy plus PC samples.
>| zelno> 
> This is advanced help for prodtest
> Options:
> -i|--input \t The input filename with the parameters to test and the expected values.
>| zelno> 
> This is advanced help for prodtest
> Options:
> -i|--input \t The input filename with the parameters to test and the expected values.
>| zelno> 
> This is advanced help for wattscope
> Options:
> -s|--sampfreq \t The rate at which samples are collected. Default is 2K.(optional)
> -o|--out \t The output file name. The only format supported is csv.(mandatory)
> -D|--duration \t The amount of time in ms that the samples should be collected. 
> \t\t By default the samples will be collected indefinitely until interrupted by Ctrl+C. (optional)
> -t|--trig \t Synchronize with hw trigger (GPIOIN1). This is only applicable to PRB210 standalone probe. (optional)
> -r|--range \t Specify 'lo' (for low range) and 'hi' (for high range). This is only applicable to PRB210 standalone probe with WSPRO add-on. Default is 'lo'. (optional)
> --saveall \t Save all captured data to output file. By default the last ~33 minutes of data is saved for WS-CORE technology and
> \t\t last ~1 minute of data is saved for WSPRO technology due to large data size. (optional)
> -h|--help \t Help
> Argument:
> <ws|ws+> \t [ws] mode is energy samples only. [ws+] mode is energy plus PC samples.
> This is advanced help for prodtest
> Options:
> -i|--input \t The input filename with the parameters to test and the expected values.
> zelno> zelno> This is advanced help for prodtest
> Options:
> -i|--input \t The input filename with the parameters to test and the expected values.
>| zelno> 
> This is advanced help for wattscope
> Options:
> -s|--sampfreq \t The rate at which samples are collected. Default is 2K.(optional)
> -o|--out \t The output file name. The only format supported is csv.(mandatory)
> -D|--duration \t The amount of time in ms that the samples should be collected. 
> \t\t By default the samples will be collected indefinitely until interrupted by Ctrl+C. (optional)
> -t|--trig \t Synchronize with hw trigger (GPIOIN1). This is only applicable to PRB210 standalone probe. (optional)
> -r|--range \t Specify 'lo' (for low range) and 'hi' (for high range). This is only applicable to PRB210 standalone probe with WSPRO add-on. Default is 'lo'. (optional)
> --saveall \t Save all captured data to output file. By default the last ~33 minutes of data is saved for WS-CORE technology and
> \t\t last ~1 minute of data is saved for WSPRO technology due to large data size. (optional)
> -h|--help \t Help
> Argument:
> <ws|ws+> \t [ws] mode is energy samples only. [ws+] mode is energy plus PC samples.
>| zelno> zelno> 
% expect-file double_record.txt
= wattscope_create 1
=~ .*
= LD_LIBRARY_PATH=/before:../../../../common/dblnk
= prodtest_create 2
= input=env.txt
= config=board.dat
= device=unused
= LD_LIBRARY_PATH=/before:../../../../common/dblnk:../../../../common/dblnk
= wattscope_destroy 1 runs=1 stops=0 end=self
= prodtest_destroy 2 runs=1 stops=0 end=self
