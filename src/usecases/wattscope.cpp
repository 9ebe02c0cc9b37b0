#include <iostream>
#include <stdexcept>

#include "usecases/wattscope.h"

void wattscope_command(argument_list&, command_queue&) {
    throw std::runtime_error("wattscope: not built yet\n");
}

void wattscope_help(bool advanced) {
    if (!advanced) {
        std::cout << "This is simple help for wattscope" << std::endl;
        return;
    }
    std::cout << "This is advanced help for wattscope" << std::endl;
    std::cout << "Options:" << std::endl;
    std::cout << "-s|--sampfreq \t The rate at which samples are collected. Default is 2K.(optional)"
              << std::endl;
    std::cout << "-o|--out \t The output file name. The only format supported is csv.(mandatory)"
              << std::endl;
    std::cout << "-D|--duration \t The amount of time in ms that the samples should be collected. "
              << std::endl;
    std::cout << "\t\t By default the samples will be collected indefinitely until interrupted by "
                 "Ctrl+C. (optional)"
              << std::endl;
    std::cout << "-t|--trig \t Synchronize with hw trigger (GPIOIN1). This is only applicable to "
                 "PRB210 standalone probe. (optional)"
              << std::endl;
    std::cout << "-r|--range \t Specify 'lo' (for low range) and 'hi' (for high range). This is "
                 "only applicable to PRB210 standalone probe with WSPRO add-on. Default is 'lo'. "
                 "(optional)"
              << std::endl;
    std::cout << "--saveall \t Save all captured data to output file. By default the last ~33 "
                 "minutes of data is saved for WS-CORE technology and"
              << std::endl;
    std::cout << "\t\t last ~1 minute of data is saved for WSPRO technology due to large data "
                 "size. (optional)"
              << std::endl;
    std::cout << "-h|--help \t Help" << std::endl;
    std::cout << "Argument:" << std::endl;
    std::cout << "<ws|ws+> \t [ws] mode is energy samples only. [ws+] mode is energy plus PC "
                 "samples."
              << std::endl;
}
