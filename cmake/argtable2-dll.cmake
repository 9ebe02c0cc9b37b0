# argtable2.dll for the Windows build, made from the upstream tarball of
# Debian's source package argtable2 (fetched once into the build tree and
# checked by scripts/fetch-argtable2; the source is never committed).
#
# The fetch runs at configure time, so that argtable2.h is there before
# anything that includes it compiles; a build tree that has the source
# already configures without the network.
set(ZELNO_ARGTABLE2_ROOT ${CMAKE_BINARY_DIR}/_deps/argtable2)
set(ZELNO_ARGTABLE2_SOURCE_DIR ${ZELNO_ARGTABLE2_ROOT}/source)
set(ZELNO_ARGTABLE2_INCLUDE_DIR ${ZELNO_ARGTABLE2_ROOT}/include)

if(NOT EXISTS ${ZELNO_ARGTABLE2_SOURCE_DIR}/src/argtable2.def)
  message(STATUS "Fetching argtable2's source from Debian")
  execute_process(
    COMMAND ${PROJECT_SOURCE_DIR}/scripts/fetch-argtable2 ${ZELNO_ARGTABLE2_ROOT}/download
    OUTPUT_VARIABLE tarball OUTPUT_STRIP_TRAILING_WHITESPACE
    RESULT_VARIABLE fetch_result)
  if(NOT fetch_result EQUAL 0)
    message(FATAL_ERROR "argtable2's source could not be fetched (see above)")
  endif()
  file(REMOVE_RECURSE ${ZELNO_ARGTABLE2_ROOT}/unpack ${ZELNO_ARGTABLE2_SOURCE_DIR})
  file(ARCHIVE_EXTRACT INPUT ${tarball} DESTINATION ${ZELNO_ARGTABLE2_ROOT}/unpack)
  # The tarball holds one folder named after the version.
  file(GLOB unpacked LIST_DIRECTORIES true ${ZELNO_ARGTABLE2_ROOT}/unpack/*)
  file(RENAME ${unpacked} ${ZELNO_ARGTABLE2_SOURCE_DIR})
  file(REMOVE_RECURSE ${ZELNO_ARGTABLE2_ROOT}/unpack)
endif()

# Only the header goes on zelno's include path: the library's source folder
# also has a getopt.h that would shadow the compiler's.
file(COPY ${ZELNO_ARGTABLE2_SOURCE_DIR}/src/argtable2.h DESTINATION ${ZELNO_ARGTABLE2_INCLUDE_DIR})
include_directories(SYSTEM ${ZELNO_ARGTABLE2_INCLUDE_DIR})

# The files upstream builds for Windows: arg_date.c needs strptime() and
# arg_rex.c <regex.h>, neither of which Windows has; zelno binds neither.
set(argtable2_sources argtable2.c arg_dbl.c arg_end.c arg_file.c arg_int.c arg_lit.c
                      arg_rem.c arg_str.c getopt.c getopt1.c)
list(TRANSFORM argtable2_sources PREPEND ${ZELNO_ARGTABLE2_SOURCE_DIR}/src/)
# Upstream's own export list: the plain names, no decoration.
add_library(argtable2_dll SHARED ${argtable2_sources} ${ZELNO_ARGTABLE2_SOURCE_DIR}/src/argtable2.def)
# Without configure's config.h, these say what the C library has (upstream's
# Windows makefile sets the same). The library's getopt.h is the one its
# getopt.c implements, so its folder comes first.
target_compile_definitions(argtable2_dll PRIVATE STDC_HEADERS HAVE_STDLIB_H HAVE_STRING_H)
target_include_directories(argtable2_dll BEFORE PRIVATE ${ZELNO_ARGTABLE2_SOURCE_DIR}/src)
# Someone else's code: our warning flags are not its standard.
set_property(TARGET argtable2_dll PROPERTY COMPILE_OPTIONS
             -w -include ${PROJECT_SOURCE_DIR}/cmake/argtable2-mingw.h)
set_target_properties(argtable2_dll PROPERTIES
  OUTPUT_NAME argtable2 PREFIX "" C_STANDARD 99 C_EXTENSIONS ON
  RUNTIME_OUTPUT_DIRECTORY ${ZELNO_LIBRARY_DIR})
set(ZELNO_ARGTABLE2_DLL ${ZELNO_LIBRARY_DIR}/argtable2.dll)

install(PROGRAMS ${ZELNO_ARGTABLE2_DLL} DESTINATION ${ZELNO_INSTALL_LIBRARY_DIR})
