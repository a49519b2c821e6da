# Toolchain file: cross-builds Linux programs for s390x, which stores numbers with their highest byte first, with Debian's
# package g++-s390x-linux-gnu.
set(CMAKE_SYSTEM_PROCESSOR s390x)
include(${CMAKE_CURRENT_LIST_DIR}/linux_cross.cmake)
