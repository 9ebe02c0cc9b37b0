#include <iostream>
#include <stdexcept>

#include "usecases/prodtest.h"

void prodtest_command(argument_list&, command_queue&) {
    throw std::runtime_error("prodtest: not built yet\n");
}

void prodtest_help(bool advanced) {
    if (!advanced) {
        std::cout << "This is simple help for prodtest" << std::endl;
        return;
    }
    std::cout << "This is advanced help for prodtest" << std::endl;
    std::cout << "Options:" << std::endl;
    std::cout << "-i|--input \t The input filename with the parameters to test and the expected "
                 "values."
              << std::endl;
}
