// The exported functions of zelno's own probe library. They keep C++ exceptions inside the
// library: zelno calls them from threads that catch nothing.
//
// What a use case prints goes out in one write per stream at its end,
// not through std::cout: zelno may be writing a line of its own from another
// thread at that moment (its stop message), and std::cout would let the two
// interleave piece by piece inside one stdio buffer.

#include <sstream>
#include <string>

#include "common/native_file.h"
#include "engine/capture.h"
#include "engine/production_test.h"
#include "sources.h"
#include "usecases/usecase_abi.h"

#define STANDIN_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

using standin::sim::capture;
using standin::sim::production_test;

void report(const char* use_case, const std::string& problem) {
    standin::write_console(true, std::string(use_case) + ": " + problem + "\n");
}

template <typename UseCase>
int32_t run_and_print(UseCase& use_case) {
    std::ostringstream out;
    std::ostringstream errors;
    const int32_t result = use_case.run(out, errors);
    standin::write_console(true, errors.str());
    standin::write_console(false, out.str());
    return result;
}

// Runs a use case behind a handle, keeping exceptions inside the library.
template <typename UseCase>
int32_t run_handle(void* handle, const char* name) {
    if (handle == nullptr) {
        return -1;
    }
    try {
        return run_and_print(*static_cast<UseCase*>(handle));
    } catch (const std::exception& e) {
        report(name, e.what());
    }
    return -1;
}

template <typename UseCase>
int32_t stop_handle(void* handle) {
    if (handle == nullptr) {
        return -1;
    }
    static_cast<UseCase*>(handle)->stop();
    return 0;
}

// Fills what a use case can tell of its progress; a record smaller than
// ours is refused rather than overrun.
template <typename UseCase, typename Fill>
int32_t progress_of(void* handle, usecase_progress* progress, Fill fill) {
    if (handle == nullptr || progress == nullptr || progress->size < sizeof(usecase_progress)) {
        return -1;
    }
    try {
        usecase_progress figures{};
        figures.size = progress->size;
        fill(*static_cast<const UseCase*>(handle), figures);
        *progress = figures;
        return 0;
    } catch (const std::exception&) {
        return -1;  // Nothing worth a line on zelno's console.
    }
}

// Makes a use case behind a handle; `make` returns null with its reason.
template <typename Options, typename Make>
int32_t create_handle(const Options* options, void** handle, const char* name, Make make) {
    if (handle == nullptr) {
        return -1;
    }
    *handle = nullptr;
    if (options == nullptr) {
        report(name, "no options");
        return -1;
    }
    try {
        std::string error;
        auto made = make(*options, error);
        if (!made) {
            report(name, error);
            return -1;
        }
        *handle = made.release();
        return 0;
    } catch (const std::exception& e) {
        report(name, e.what());
    }
    return -1;
}

}  // namespace

STANDIN_EXPORT int32_t wattscope_create(const wattscope_options* options, void** handle) {
    return create_handle(
        options, handle, "wattscope", [](const wattscope_options& given, std::string& error) {
            std::optional<standin::sim::capture_settings> settings =
                standin::sim::check_capture_options(given, error);
            auto made =
                settings ? standin::sim::make_capture(std::move(*settings), error) : nullptr;
            if (made) {
                standin::write_console(true, made->start_notes());  // Before any use case runs.
            }
            return made;
        });
}

STANDIN_EXPORT int32_t wattscope_run(void* handle) {
    return run_handle<capture>(handle, "wattscope");
}

STANDIN_EXPORT int32_t wattscope_stop(void* handle) {
    return stop_handle<capture>(handle);
}

STANDIN_EXPORT int32_t wattscope_destroy(void* handle) {
    delete static_cast<capture*>(handle);
    return 0;
}

STANDIN_EXPORT int32_t wattscope_progress(void* handle, usecase_progress* progress) {
    return progress_of<capture>(handle, progress, [](const capture& c, usecase_progress& p) {
        const capture::progress_figures figures = c.progress();
        p.samples = figures.rows;
        p.fields = progress_samples;
        if (figures.rows > 0) {  // A mean of no samples would read as a measured 0 A.
            p.mean_current_a = figures.current_sum_na * 1e-9 / static_cast<double>(figures.rows);
            p.energy_j = figures.energy_nj * 1e-9;
            p.fields |= progress_mean_current | progress_energy;
        }
    });
}

STANDIN_EXPORT int32_t prodtest_create(const prodtest_options* options, void** handle) {
    return create_handle(options, handle, "prodtest", &standin::sim::make_production_test);
}

STANDIN_EXPORT int32_t prodtest_run(void* handle) {
    return run_handle<production_test>(handle, "prodtest");
}

STANDIN_EXPORT int32_t prodtest_stop(void* handle) {
    return stop_handle<production_test>(handle);
}

STANDIN_EXPORT int32_t prodtest_progress(void* handle, usecase_progress* progress) {
    return progress_of<production_test>(handle, progress,
                                        [](const production_test& test, usecase_progress& p) {
                                            p.samples = test.samples_taken();
                                            p.fields = progress_samples;
                                        });
}

STANDIN_EXPORT int32_t prodtest_destroy(void* handle) {
    delete static_cast<production_test*>(handle);
    return 0;
}
