#include "shell/shell.h"

int main(int argc, char** argv) {
    return argc < 2 ? run_interactive() : run_option_mode(argc, argv);
}
