#!/usr/bin/env bash
# CI: the library as the device's build consumes it.
#   1. cmake --install of the built tree into a staging prefix;
#   2. examples/consumer built from the staging prefix with find_package, and
#      again with pkg-config, each run against the camsim program;
#   3. the library cross-built for ARM Linux (cmake/toolchains/) against a
#      stand-in of the device's platform libraries (scripts/device-sdk-stub.sh),
#      its exports checked, and installed.
#
#   scripts/ci-package.sh [BUILD_DIR]     (a tree built by scripts/test.sh)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
root=$PWD
stage=$root/$build-stage
consumer=$root/$build-consumer
camsim=$root/$build/tools/camsim/camsim

echo "-- install into $stage"
rm -rf "$stage" "$consumer"
cmake --install "$build" --prefix "$stage" > /dev/null
find "$stage" -type f -o -type l | sed "s|^$stage/|   |" | sort

echo "-- consumer with find_package(CCamRequester CONFIG)"
cmake -S examples/consumer -B "$consumer" -DCMAKE_PREFIX_PATH="$stage" > /dev/null
cmake --build "$consumer" -j"$(nproc)" > /dev/null
bash examples/consumer/run-against-camsim.sh "$camsim" "$consumer/consumer" 2>/dev/null

echo "-- consumer with pkg-config ccamrequester"
export PKG_CONFIG_PATH="$stage/lib/pkgconfig"
libdir=$(pkg-config --variable=libdir ccamrequester)
# shellcheck disable=SC2046
g++ -std=c++17 -Wall -Wextra -Werror examples/consumer/main.cpp -o "$consumer/consumer-pc" \
  $(pkg-config --cflags --libs ccamrequester) -Wl,-rpath,"$libdir"
bash examples/consumer/run-against-camsim.sh "$camsim" "$consumer/consumer-pc" 2>/dev/null
unset PKG_CONFIG_PATH

echo "-- ARM cross build against the device's platform libraries (stand-in)"
bash scripts/install-deps.sh scripts/packages-cross.txt
arm=$root/$build-arm
rm -rf "$arm" "$arm-sdk" "$arm-stage"
bash scripts/device-sdk-stub.sh arm-linux-gnueabihf-gcc "$arm-sdk"
cmake -S . -B "$arm" -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/arm-linux-gnueabihf.cmake \
  -DCAMREQ_DEVICE_PLATFORM=ON -DCAMREQ_DEVICE_PLATFORM_DIR="$arm-sdk" > /dev/null
cmake --build "$arm" -j"$(nproc)" > /dev/null
arm-linux-gnueabihf-readelf -h "$arm/libCCamRequester.so" | grep -q 'Machine:.*ARM'
arm-linux-gnueabihf-readelf -d "$arm/libCCamRequester.so" | grep -E 'NEEDED|SONAME' | sed 's/^ */   /'
bash abi/check-exports.sh requester "$arm/libCCamRequester.so"
cmake --install "$arm" --prefix "$arm-stage" > /dev/null
echo "-- package checks passed"
