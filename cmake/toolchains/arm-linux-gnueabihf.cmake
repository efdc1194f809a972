# Cross build for an ARM Linux board (32-bit, hard float) with Debian's
# cross compiler (apt-get install g++-arm-linux-gnueabihf):
#
#   cmake -S . -B build-arm \
#         -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/arm-linux-gnueabihf.cmake \
#         -DCAMREQ_DEVICE_PLATFORM=ON -DCAMREQ_DEVICE_PLATFORM_DIR=/path/to/device-sdk
#   cmake --build build-arm -j2
#
# CAMREQ_DEVICE_PLATFORM links the board's own platform libraries; the
# replacements in platform/ build for ARM too (-DCAMREQ_LIBRARY_ONLY=ON
# instead), but their HTTP client needs nettle for ARM (Debian multiarch:
# dpkg --add-architecture armhf; apt-get install nettle-dev:armhf), which
# pkg-config finds through the folder set below.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(CAMREQ_CROSS_TRIPLE arm-linux-gnueabihf)
set(CMAKE_C_COMPILER ${CAMREQ_CROSS_TRIPLE}-gcc)
set(CMAKE_CXX_COMPILER ${CAMREQ_CROSS_TRIPLE}-g++)

# Debian keeps the target's headers and libraries under /usr/<triple>; a
# board's own sysroot can be given with -DCMAKE_SYSROOT=...
set(CMAKE_FIND_ROOT_PATH /usr/${CAMREQ_CROSS_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# pkg-config looks at the target's .pc files only.
set(ENV{PKG_CONFIG_LIBDIR} "/usr/lib/${CAMREQ_CROSS_TRIPLE}/pkgconfig:/usr/share/pkgconfig")
