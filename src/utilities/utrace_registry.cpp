#include "utilities/utrace_registry.h"

namespace VX_UTL {

uTraceRegistry& get_trace_registry() {
    // Never freed: a writer may still ask for it from a static destructor.
    static uTraceRegistry* const registry = new uTraceRegistry;
    return *registry;
}

}  // namespace VX_UTL
