#include "usecases/library_command.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

// A library in the test itself. The transcripts cover a missing function and
// the handle's return; here, that no address is kept between calls.
std::map<std::string, int> look_ups;
void* destroyed_handle = nullptr;

int32_t fake_run(void*) {
    return 7;
}
int32_t fake_destroy(void* handle) {
    destroyed_handle = handle;
    return 0;
}

VX_UTL::uDll::symbol fake_resolve(const char* name) {
    ++look_ups[name];
    return std::string(name) == "t_destroy" ? reinterpret_cast<VX_UTL::uDll::symbol>(&fake_destroy)
                                            : reinterpret_cast<VX_UTL::uDll::symbol>(&fake_run);
}

const library_functions fake_functions{fake_resolve, "t_run", "t_stop", "t_destroy"};

struct fake_command : library_command {
    explicit fake_command(void* owned) : library_command(fake_functions, owned) {}
};

TEST(library_command, looks_each_function_up_at_every_call) {
    int handle = 0;
    {
        fake_command command(&handle);
        look_ups.clear();
        EXPECT_EQ(command.run(), 7);
        command.run();
        command.stop();
        EXPECT_EQ(look_ups, (std::map<std::string, int>{{"t_run", 2}, {"t_stop", 1}}));
    }
    EXPECT_EQ(look_ups["t_destroy"], 1);
    EXPECT_EQ(destroyed_handle, &handle);
}

}  // namespace
