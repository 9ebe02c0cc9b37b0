# Help needs no session, wins over wrong or missing options beside it, and
# neither loads the library nor queues anything: the library placed where
# the first attempt finds it records nothing.
% copy @TESTLIBS@/usecase/basic/libwattscopestandalone.so wattscope/libwattscopestandalone.so
< wattscope --help
< wattscope -h --bogus -s abc
< prodtest -h
< prodtest --help --input
< help wattscope prodtest
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
>| zelno> 
% no-file double_record.txt
