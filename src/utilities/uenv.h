#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace VX_UTL {

// The value that uEnv::get last read on each thread, by thread id. Entries
// are never removed. Constructed with the other process-wide objects, in
// the shell's static_objects.cpp.
extern std::map<uint32_t, std::string> thread_env_values;

class uEnv {
  public:
    // Value of the variable, never null; empty for an unset variable. The
    // text stays valid until this thread's next get: copy it at once.
    static const char* get(const char* name);
    static void set(const char* name, const char* value);

  private:
    // The platform's calls alone, in uenv_posix.cpp and uenv_win32.cpp.
    static void read_variable(const char* name, std::string& value);
    static void write_variable(const char* name, const char* value);
};

}  // namespace VX_UTL
