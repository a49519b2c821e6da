# Toolchain file: cross-builds Linux programs for 64-bit ARM (the system that Debian calls arm64), with Debian's package
# g++-aarch64-linux-gnu.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/linux_cross.cmake)
