#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace VX_UTL {

class uTraceLog;

// Says whether tracing is on and which log takes the lines. A writer calls
// get_trace_registry, stops unless trace_level is 1 or more, then calls
// trace_log->write. Nothing in zelno raises the level.
struct uTraceRegistry {
    uTraceLog* trace_log = nullptr;  // Not owned: the installer owns it.
    int32_t trace_level = 0;
    std::map<std::string, std::string> trace_map;
};

// Created on first use, never freed.
uTraceRegistry& get_trace_registry();

}  // namespace VX_UTL
