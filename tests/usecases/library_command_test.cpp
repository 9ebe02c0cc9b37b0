// No function address is kept between calls: a library seen only through a
// counting resolver. The transcripts cover a missing function and the
// handle given back.

#include "usecases/library_command.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

std::map<std::string, int> look_ups;

int32_t handle_function(void*) {
    return 7;
}

VX_UTL::uDll::symbol counting_resolve(const char* name) {
    ++look_ups[name];
    return reinterpret_cast<VX_UTL::uDll::symbol>(&handle_function);
}

const library_functions counted_functions{counting_resolve, "run", "stop", "destroy"};

struct counted_command : library_command {
    counted_command() : library_command(counted_functions, nullptr) {}
};

TEST(library_command, looks_each_function_up_at_every_call) {
    {
        counted_command command;
        look_ups.clear();
        EXPECT_EQ(command.run(), 7);
        command.run();
        command.stop();
    }
    EXPECT_EQ(look_ups, (std::map<std::string, int>{{"run", 2}, {"stop", 1}, {"destroy", 1}}));
}

}  // namespace
