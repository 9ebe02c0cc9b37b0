#include "usecases/library_command.h"

#include <stdexcept>

#include "usecases/usecase_abi.h"

namespace {

// run, stop and destroy share one form, that of a use case's run.
using handle_function = wattscope_run_fn;

handle_function find(const library_functions& functions, const char* name) {
    return reinterpret_cast<handle_function>(functions.resolve(name));
}

}  // namespace

library_command::library_command(const library_functions& library, void* owned_handle)
    : functions(library), handle(owned_handle) {
    try {
        find(functions, functions.run);
        find(functions, functions.stop);
        find(functions, functions.destroy);
    } catch (...) {
        // No destructor will run for a half-made object, and the handle
        // would be lost with it.
        try {
            find(functions, functions.destroy)(handle);
        } catch (...) {
            // Without a destroy function the handle can't be given back.
        }
        throw;
    }
    try {
        has_progress =
            functions.progress != nullptr && functions.resolve(functions.progress) != nullptr;
    } catch (const std::runtime_error&) {
        // An optional export: without it only times are shown.
    }
}

library_command::~library_command() {
    try {
        find(functions, functions.destroy)(handle);
    } catch (...) {
        // The constructor found the function, and the library stays loaded,
        // so a look-up can only fail for want of memory; nothing to be done.
    }
    handle = nullptr;
}

int32_t library_command::run() {
    return find(functions, functions.run)(handle);
}

void library_command::stop() {
    find(functions, functions.stop)(handle);
}

run_figures library_command::figures() {
    if (!has_progress) {
        return {};
    }
    const auto progress =
        reinterpret_cast<usecase_progress_fn>(functions.resolve(functions.progress));
    usecase_progress record{};
    record.size = sizeof record;
    if (progress(handle, &record) != 0) {
        return {};
    }
    run_figures figures;
    if ((record.fields & progress_samples) != 0) {
        figures.samples = record.samples;
    }
    if ((record.fields & progress_mean_current) != 0) {
        figures.mean_current_a = record.mean_current_a;
    }
    if ((record.fields & progress_energy) != 0) {
        figures.energy_j = record.energy_j;
    }
    return figures;
}
