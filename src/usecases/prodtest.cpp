#include "usecases/prodtest.h"

#include <cstdio>
#include <iostream>
#include <memory>
#include <stdexcept>

#include "execution/command_queue.h"
#include "options/argtable_table.h"
#include "usecases/usecase_abi.h"
#include "usecases/usecase_library.h"

namespace {

const library_functions prodtest_functions{prodtest_symbol, "prodtest_run", "prodtest_stop",
                                           "prodtest_destroy", "prodtest_progress"};

}  // namespace

prodtest::prodtest(void* owned_handle) : library_command(prodtest_functions, owned_handle) {}

void prodtest_command(argument_list& args, command_queue& queue) {
    argtable_binding& argtable = get_argtable_binding();
    arg_str* input = argtable.arg_strn("i", "input", "<config file>", 1, 1, "The output file");
    arg_str* device =
        argtable.arg_strn("d", "device", "<name of device>", 1, 1, "The name of the device");
    arg_str* config = argtable.arg_strn("c", "config", "<config file>", 1, 1, "Configuration file");
    arg_lit* help = argtable.arg_litn("h", "help", 0, 1, "Help");
    struct arg_end* end = argtable.arg_end(20);
    argtable_table<5> table(argtable, {input, device, config, help, end});
    if (table.has_null_entry()) {
        throw std::runtime_error("prodtest: insufficient memory\n");
    }
    const int errors = table.parse(args);

    // Help first: whatever else is wrong with the line, it is not reported.
    if (help->count == 1) {
        prodtest_help(true);
        return;
    }
    if (errors > 0) {
        argtable.arg_print_errors(stderr, end, args[0].c_str());
        queue.note_refused();
        return;
    }

    const auto create = reinterpret_cast<prodtest_create_fn>(prodtest_symbol("prodtest_create"));
    prodtest_options options;
    options.input = input->sval[0];
    options.config = config->sval[0];
    options.device = device->sval[0];

    void* handle = nullptr;
    create(&options, &handle);
    // Nothing to run; saying why is the library's business.
    if (handle == nullptr) {
        queue.note_refused();
        return;
    }
    // A test has no time limit: it ends by itself or on Ctrl+C.
    auto command = std::make_unique<prodtest>(handle);
    queue.add("prodtest", command.release(), 0);
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
