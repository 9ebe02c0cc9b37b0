#include "usecases/library_command.h"

#include <gtest/gtest.h>

#include <map>
#include <stdexcept>
#include <string>

namespace {

// A library in the test itself: the resolver below hands out these
// functions, or throws for the one name that the case leaves out.
int32_t run_result = 0;
int stop_calls = 0;
int destroy_calls = 0;
void* destroyed_handle = nullptr;
std::string missing;
std::map<std::string, int> look_ups;

int32_t fake_run(void*) {
    return run_result;
}
int32_t fake_stop(void*) {
    ++stop_calls;
    return 0;
}
int32_t fake_destroy(void* handle) {
    ++destroy_calls;
    destroyed_handle = handle;
    return 0;
}

VX_UTL::uDll::symbol fake_resolve(const char* name) {
    ++look_ups[name];
    if (missing == name) {
        throw std::runtime_error("Function " + missing + " not found in fake\n");
    }
    const std::map<std::string, VX_UTL::uDll::symbol> exports = {
        {"t_run", reinterpret_cast<VX_UTL::uDll::symbol>(&fake_run)},
        {"t_stop", reinterpret_cast<VX_UTL::uDll::symbol>(&fake_stop)},
        {"t_destroy", reinterpret_cast<VX_UTL::uDll::symbol>(&fake_destroy)},
    };
    return exports.at(name);
}

const library_functions fake_functions{fake_resolve, "t_run", "t_stop", "t_destroy"};

class fake_command : public library_command {
  public:
    explicit fake_command(void* owned_handle) : library_command(fake_functions, owned_handle) {}
};

class LibraryCommand : public testing::Test {
  protected:
    void SetUp() override {
        run_result = 0;
        stop_calls = 0;
        destroy_calls = 0;
        destroyed_handle = nullptr;
        missing.clear();
        look_ups.clear();
    }
    int handle_object = 0;
    void* handle = &handle_object;
};

TEST_F(LibraryCommand, AMissingFunctionFailsTheConstructionAndGivesTheHandleBack) {
    struct row {
        const char* missing;
        int destroy_calls;  // 0: the handle can't be given back
    };
    for (const row& r : {row{"t_run", 1}, row{"t_stop", 1}, row{"t_destroy", 0}}) {
        SetUp();
        missing = r.missing;
        try {
            fake_command command(handle);
            ADD_FAILURE() << r.missing << ": no exception";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(std::string("Function ") + r.missing + " not found in fake\n", error.what());
        }
        EXPECT_EQ(r.destroy_calls, destroy_calls) << r.missing;
        if (r.destroy_calls == 1) {
            EXPECT_EQ(handle, destroyed_handle) << r.missing;
        }
    }
}

TEST_F(LibraryCommand, KeepsNoAddressAndDestroysTheHandleOnce) {
    {
        fake_command command(handle);
        EXPECT_EQ(0, destroy_calls);
        look_ups.clear();
        for (const int32_t result : {0, 1, -1, 2}) {
            run_result = result;
            EXPECT_EQ(result, command.run());
        }
        command.stop();
        command.stop();
        EXPECT_EQ(2, stop_calls);
        EXPECT_EQ(4, look_ups["t_run"]);
        EXPECT_EQ(2, look_ups["t_stop"]);
    }
    EXPECT_EQ(1, look_ups["t_destroy"]);
    EXPECT_EQ(1, destroy_calls);
    EXPECT_EQ(handle, destroyed_handle);
}

}  // namespace
