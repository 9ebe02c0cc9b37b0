# Cross-build for Windows x86-64 with Debian's MinGW-w64 (package
# g++-mingw-w64-x86-64-posix). The posix flavour gives std::thread and
# std::mutex; zelno's own threads still use the Win32 calls.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(ZELNO_MINGW_PREFIX x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${ZELNO_MINGW_PREFIX}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ZELNO_MINGW_PREFIX}-g++-posix)
set(CMAKE_RC_COMPILER ${ZELNO_MINGW_PREFIX}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${ZELNO_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The runtime (libgcc, libstdc++, winpthread) goes into every executable and
# DLL, so what we ship needs no MinGW DLL beside it.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")

# Tests run the built .exe files under Wine, without its start-up chatter
# (Debian's hint that wine32 is missing, "err:" lines of the absent display
# driver) in their output; run wine by hand to see Wine's own messages.
set(CMAKE_CROSSCOMPILING_EMULATOR env WINEDEBUG=-all wine)
