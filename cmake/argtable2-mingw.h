/* Forced into every source file of argtable2.dll: the upstream code was
   written against glibc, and MinGW-w64's C headers differ in two ways. */
#include <errno.h>
#include <stdlib.h>

/* arg_int.c names one of its own error codes EOVERFLOW, an enumerator that
   MinGW's <errno.h> turns into a number. The library never uses errno's
   EOVERFLOW, and the include guard keeps the macro from coming back. */
#undef EOVERFLOW

/* arg_int.c calls isspace() and toupper() without including <ctype.h>,
   which glibc's <stdlib.h> brings in and MinGW's does not. */
#include <ctype.h>
