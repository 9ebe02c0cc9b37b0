#pragma once

// The C++ objects that cross into a library loaded at run time: the strings
// and the shared pointer of the use-case records, and the strings that the
// target converter takes by value. They take the form that the library's
// own compiler gives them, so the build picks one header per platform
// (ZELNO_LIBRARY_TYPES_HEADER, set in src/utilities/CMakeLists.txt):
//
// - ulibrary_types_posix.h: libstdc++'s std::string and std::shared_ptr,
//   as the libraries are built with the same toolchain as zelno.
// - ulibrary_types_win32.h: Microsoft's x64 layout, which a normal build of
//   the vendor's DLLs reads and writes.
//
// Both give the same names, so the code that fills and reads them is one:
// - uLibraryString: assigned from text (`s = "ws"`), destroyed with its
//   owner, read with VX_UTL::text_of(s) as a string_view.
// - uLibrarySharedPtr: empty when zelno makes it; its destructor drops the
//   reference a library may have left in it.
// - uLibraryStringArgument: the parameter type of a string passed by value.
//   The caller builds a uStringArgument and calls with hand_over(), after
//   which the object is the callee's; the callee takes its parameter into
//   a uReceivedString, which destroys it at the end of the call.
#include ZELNO_LIBRARY_TYPES_HEADER
