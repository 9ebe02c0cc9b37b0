#include "utilities/uconsole.h"

// Placeholder until the execution layer lands: no routing yet.
namespace VX_UTL {
struct uConsoleControl::platform_state {};
uConsoleControl::uConsoleControl(console_ctrl_routine) {}
uConsoleControl::~uConsoleControl() = default;
}  // namespace VX_UTL
