# Cross-compiling for 64-bit Windows with Debian's mingw-w64 (the POSIX
# threading variant of GCC, whose C++ runtime has std::thread), running the
# programs the build and the tests start under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(ORU_MINGW_TRIPLET x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${ORU_MINGW_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ORU_MINGW_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${ORU_MINGW_TRIPLET}-windres)
set(CMAKE_OBJDUMP ${ORU_MINGW_TRIPLET}-objdump CACHE FILEPATH "objdump for the target")

# Libraries and headers come from the mingw-w64 tree only; programs (the
# build's own tools) from the host.
set(CMAKE_FIND_ROOT_PATH /usr/${ORU_MINGW_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The GCC runtimes (libgcc, libstdc++, winpthread) are linked statically into
# oru.dll and every program, so nothing but oru.dll and the system's own DLLs
# has to be found at run time.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static")

# ctest and gtest_discover_tests run every program through this wrapper: Wine
# in a prefix of its own inside the build directory, debug output off.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine-run.sh)
