#include "usecases/library_command.h"

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
