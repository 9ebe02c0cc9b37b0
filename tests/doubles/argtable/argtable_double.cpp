// argtable2 as the binding may meet it. "underscore" exports every name only
// with a leading underscore. "no_dbln" lacks arg_dbln and exports arg_intn
// only as _arg_intn, so the slots in front of the gap mix both forms.

#include <argtable2.h>

#include "host.h"

namespace {

template <typename Function>
Function real(const char* name) {
    return reinterpret_cast<Function>(library_function(ARGTABLE_REAL_LIBRARY, name));
}

}  // namespace

#define FORWARD(exported, name, result, parameters, arguments) \
    extern "C" result exported parameters {                    \
        return real<decltype(&::name)>(#name) arguments;       \
    }

#if defined(ARGTABLE_UNDERSCORE)
#define EXPORTED(name) _##name
#else
#define EXPORTED(name) name
#endif

#define OPTION_PARAMETERS                                                             \
    (const char* shortopts, const char* longopts, const char* datatype, int mincount, \
     int maxcount, const char* glossary)
#define OPTION_ARGUMENTS (shortopts, longopts, datatype, mincount, maxcount, glossary)

FORWARD(EXPORTED(arg_parse), arg_parse, int, (int argc, char** argv, void** argtable),
        (argc, argv, argtable))
FORWARD(EXPORTED(arg_litn), arg_litn, struct arg_lit*,
        (const char* shortopts, const char* longopts, int mincount, int maxcount,
         const char* glossary),
        (shortopts, longopts, mincount, maxcount, glossary))
FORWARD(_arg_intn, arg_intn, struct arg_int*, OPTION_PARAMETERS, OPTION_ARGUMENTS)
#if !defined(ARGTABLE_NO_DBLN)
FORWARD(EXPORTED(arg_dbln), arg_dbln, struct arg_dbl*, OPTION_PARAMETERS, OPTION_ARGUMENTS)
#endif
FORWARD(EXPORTED(arg_strn), arg_strn, struct arg_str*, OPTION_PARAMETERS, OPTION_ARGUMENTS)
FORWARD(EXPORTED(arg_filen), arg_filen, struct arg_file*, OPTION_PARAMETERS, OPTION_ARGUMENTS)
FORWARD(EXPORTED(arg_end), arg_end, struct arg_end*, (int maxerrors), (maxerrors))
FORWARD(EXPORTED(arg_print_errors), arg_print_errors, void,
        (FILE * fp, struct arg_end* end, const char* progname), (fp, end, progname))
FORWARD(EXPORTED(arg_print_syntaxv), arg_print_syntaxv, void,
        (FILE * fp, void** argtable, const char* suffix), (fp, argtable, suffix))
FORWARD(EXPORTED(arg_print_glossary), arg_print_glossary, void,
        (FILE * fp, void** argtable, const char* format), (fp, argtable, format))
FORWARD(EXPORTED(arg_nullcheck), arg_nullcheck, int, (void** argtable), (argtable))
FORWARD(EXPORTED(arg_freetable), arg_freetable, void, (void** argtable, size_t n), (argtable, n))
