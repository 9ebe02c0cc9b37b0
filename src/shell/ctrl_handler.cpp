#include "execution/command_queue.h"
#include "shell/shell.h"

std::unique_ptr<VX_UTL::uConsoleControl> install_ctrl_handler() {
    return std::make_unique<VX_UTL::uConsoleControl>(console_ctrl_handler);
}

bool console_ctrl_handler(uint32_t control_type) {
    if (control_type != VX_UTL::CTRL_C_EVENT) {
        return false;
    }
    global_command_queue.stop_all();
    return true;
}
