# What the toolchain files for Linux on other processors share; they set CMAKE_SYSTEM_PROCESSOR first. CMake and CTest
# start the programs under qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(triple ${CMAKE_SYSTEM_PROCESSOR}-linux-gnu)

set(CMAKE_C_COMPILER ${triple}-gcc)  # GoogleTest is built from source and asks for a C compiler
set(CMAKE_CXX_COMPILER ${triple}-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-${CMAKE_SYSTEM_PROCESSOR}-static -L /usr/${triple})  # -L: the shared libraries

set(CMAKE_FIND_ROOT_PATH /usr/${triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
