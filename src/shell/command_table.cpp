#include "execution/command_queue.h"
#include "session/command_log.h"
#include "session/session.h"
#include "shell/commands.h"
#include "shell/help_commands.h"
#include "usecases/prodtest.h"
#include "usecases/wattscope.h"

bool exit_requested = false;

// The order is the order of look-up and of the help listing.
const command_entry command_table[] = {
    {"quit", quit_command, quit_help, 0},
    {"help", help_command, help_help, 0},
    {"connect", connect_command, connect_help, 0},
    {"disconnect", disconnect_command, disconnect_help, 0},
    {"log", log_command, log_help, 0},
    {"wattscope", wattscope_command, wattscope_help, 1},
    {"prodtest", prodtest_command, prodtest_help, 1},
};

const uint32_t command_count = sizeof command_table / sizeof command_table[0];

const command_entry* find_command(const std::string& word) {
    for (uint32_t row = 0; row < command_count; ++row) {
        if (word == command_table[row].name) {
            return &command_table[row];
        }
    }
    return nullptr;
}
