#include "execution/command_queue.h"

// Placeholder until the execution layer lands: nothing is queued yet.
command_data_t::~command_data_t() = default;

void command_queue::add(std::string, zelno_command* command, int32_t) {
    delete command;
}
void command_queue::start_all() {}
void command_queue::stop_all() {}
void command_queue::wait_all() {}
