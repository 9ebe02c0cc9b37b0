// The process-wide objects with static storage, in one translation unit so
// that they are constructed in this order and destroyed in reverse.

#include <cstdint>
#include <map>
#include <string>

#include "execution/command_queue.h"
#include "session/command_log.h"
#include "session/session.h"
#include "utilities/uenv.h"

std::string session_config_file;
std::string session_device_name;
std::string command_log_file_name;
command_queue global_command_queue;
command_log_file command_log_stream;
std::map<uint32_t, std::string> VX_UTL::thread_env_values;
