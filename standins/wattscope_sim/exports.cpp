// The eight exported functions of libwattscopestandalone.so, the probe
// simulator. They keep C++ exceptions inside the library: zelno calls them
// from threads that catch nothing.

#include <iostream>
#include <new>
#include <string>

#include "usecases/usecase_abi.h"
#include "wattscope_sim/capture.h"
#include "wattscope_sim/production_test.h"

#define STANDIN_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

using standin::sim::capture;
using standin::sim::production_test;

void report(const char* use_case, const std::string& problem) {
    std::cerr << use_case << ": " << problem << std::endl;
}

}  // namespace

STANDIN_EXPORT int32_t wattscope_create(const wattscope_options* options, void** handle) {
    if (handle == nullptr) {
        return -1;
    }
    *handle = nullptr;
    if (options == nullptr) {
        report("wattscope", "no options");
        return -1;
    }
    try {
        std::string error;
        std::optional<standin::sim::capture_settings> settings =
            standin::sim::check_capture_options(*options, error);
        std::unique_ptr<capture> made =
            settings ? capture::create(std::move(*settings), error) : nullptr;
        if (!made) {
            report("wattscope", error);
            return -1;
        }
        *handle = made.release();
        return 0;
    } catch (const std::exception& e) {
        report("wattscope", e.what());
    }
    return -1;
}

STANDIN_EXPORT int32_t wattscope_run(void* handle) {
    if (handle == nullptr) {
        return -1;
    }
    try {
        return static_cast<capture*>(handle)->run(std::cout, std::cerr);
    } catch (const std::exception& e) {
        report("wattscope", e.what());
    }
    return -1;
}

STANDIN_EXPORT int32_t wattscope_stop(void* handle) {
    if (handle == nullptr) {
        return -1;
    }
    static_cast<capture*>(handle)->stop();
    return 0;
}

STANDIN_EXPORT int32_t wattscope_destroy(void* handle) {
    delete static_cast<capture*>(handle);
    return 0;
}

STANDIN_EXPORT int32_t prodtest_create(const prodtest_options* options, void** handle) {
    if (handle == nullptr) {
        return -1;
    }
    *handle = nullptr;
    if (options == nullptr) {
        report("prodtest", "no options");
        return -1;
    }
    try {
        std::string error;
        std::unique_ptr<production_test> made = production_test::create(*options, error);
        if (!made) {
            report("prodtest", error);
            return -1;
        }
        *handle = made.release();
        return 0;
    } catch (const std::exception& e) {
        report("prodtest", e.what());
    }
    return -1;
}

STANDIN_EXPORT int32_t prodtest_run(void* handle) {
    if (handle == nullptr) {
        return -1;
    }
    try {
        return static_cast<production_test*>(handle)->run(std::cout, std::cerr);
    } catch (const std::exception& e) {
        report("prodtest", e.what());
    }
    return -1;
}

STANDIN_EXPORT int32_t prodtest_stop(void* handle) {
    if (handle == nullptr) {
        return -1;
    }
    static_cast<production_test*>(handle)->stop();
    return 0;
}

STANDIN_EXPORT int32_t prodtest_destroy(void* handle) {
    delete static_cast<production_test*>(handle);
    return 0;
}
