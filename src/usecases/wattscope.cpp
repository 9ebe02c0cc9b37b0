#include "usecases/wattscope.h"

#include <cstdio>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>

#include "execution/command_queue.h"
#include "options/argtable_table.h"
#include "session/command_log.h"
#include "usecases/usecase_abi.h"
#include "usecases/usecase_library.h"
#include "utilities/ufile.h"

namespace {

const library_functions wattscope_functions{wattscope_symbol, "wattscope_run", "wattscope_stop",
                                            "wattscope_destroy", "wattscope_progress"};

}  // namespace

wattscope::wattscope(void* owned_handle, std::string output_name)
    : library_command(wattscope_functions, owned_handle), output(std::move(output_name)) {}

void wattscope_command(argument_list& args, command_queue& queue) {
    argtable_binding& argtable = get_argtable_binding();
    arg_int* sampfreq = argtable.arg_intn("s", "sampfreq", "<int>", 0, 1,
                                          "The rate at which samples are collected.  Default is "
                                          "2Kps.");
    arg_str* output = argtable.arg_strn("o", "output", "<output>", 1, 1, "The output file");
    arg_int* maxoutsize =
        argtable.arg_intn(nullptr, "maxoutsize", "<int>", 0, 1, "The maximum output file size");
    arg_int* duration = argtable.arg_intn(
        "D", "duration", "<int>", 0, 1,
        "The amount of time in ms that the samples should be collected.  By default the samples "
        "will be collected indefinitely until interrupted by user action or until the maximum "
        "file size has been reached");
    arg_str* format = argtable.arg_strn("f", "format", "[csv|gnuplot]", 0, 1,
                                        "Format of the data.  Default is csv");
    arg_str* device =
        argtable.arg_strn("d", "device", "<name of device>", 0, 1, "The name of the device");
    arg_str* config = argtable.arg_strn("c", "config", "<config file>", 1, 1, "Configuration file");
    arg_str* range = argtable.arg_strn("r", "range", "<lo|hi>", 0, 1, "Range");
    arg_str* trace_mode = argtable.arg_strn(nullptr, nullptr, "<ws|ws+>", 1, 1, "Trace mode");
    arg_lit* trig = argtable.arg_litn("t", "trig", 0, 1, "HW Trigger");
    arg_lit* saveall = argtable.arg_litn(nullptr, "saveall", 0, 1, "Save all data to output file");
    arg_lit* help = argtable.arg_litn("h", "help", 0, 1, "Help");
    struct arg_end* end = argtable.arg_end(20);
    argtable_table<13> table(argtable, {sampfreq, output, maxoutsize, duration, format, device,
                                        config, range, trace_mode, trig, saveall, help, end});
    if (table.has_null_entry()) {
        throw std::runtime_error("wattscope: insufficient memory\n");
    }

    // Written before the parse, so that a value on the line replaces them.
    sampfreq->ival[0] = 2000;
    maxoutsize->ival[0] = 1024;
    duration->ival[0] = 0;
    format->sval[0] = "csv";
    range->sval[0] = "lo";
    const int errors = table.parse(args);

    // Help first: whatever else is wrong with the line, it is not reported.
    if (help->count == 1) {
        wattscope_help(true);
        return;
    }
    if (errors > 0) {
        argtable.arg_print_errors(stderr, end, args[0].c_str());
        queue.note_refused();
        return;
    }

    // The library knows the files of its captures, not the command log.
    if (VX_UTL::is_same_file(output->sval[0], command_log_stream.file_in_use())) {
        throw std::runtime_error(std::string("wattscope: the output file '") + output->sval[0] +
                                 "' is the command log\n");
    }
    const auto create = reinterpret_cast<wattscope_create_fn>(wattscope_symbol("wattscope_create"));
    wattscope_options options;
    options.sampfreq = sampfreq->ival[0];
    options.output = output->sval[0];
    options.format = format->sval[0];
    options.trace_mode = trace_mode->sval[0];
    options.config = config->sval[0];
    options.device = device->sval[0];
    options.maxoutsize = maxoutsize->ival[0];
    options.range = range->sval[0];
    options.duration = duration->ival[0];
    options.trig = trig->count > 0 ? 1 : 0;
    options.saveall = saveall->count > 0 ? 1 : 0;

    void* handle = nullptr;
    create(&options, &handle);
    // Nothing to run; saying why is the library's business.
    if (handle == nullptr) {
        queue.note_refused();
        return;
    }
    auto command = std::make_unique<wattscope>(handle, output->sval[0]);
    queue.add("wattscope", command.release(), options.duration);
}

void wattscope_help(bool advanced) {
    if (!advanced) {
        std::cout << "This is simple help for wattscope" << std::endl;
        return;
    }
    std::cout << "This is advanced help for wattscope" << std::endl;
    std::cout << "Options:" << std::endl;
    std::cout
        << "-s|--sampfreq \t The rate at which samples are collected. Default is 2K.(optional)"
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
