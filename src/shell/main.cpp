#include "shell/shell.h"

int main(int argc, char** argv) {
    VX_UTL::keep_standard_descriptors_open();
    VX_UTL::keep_running_on_closed_output();
    VX_UTL::keep_line_ends_unchanged();
    if (is_script_mode(argc, argv)) {
        return run_script(argv[2]);
    }
    return argc < 2 ? run_interactive() : run_option_mode(argc, argv);
}
