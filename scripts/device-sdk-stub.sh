#!/usr/bin/env bash
# Makes a stand-in for the device's platform libraries, as a board's SDK
# would hold them: OUT/include with kxcom.h, almsnd.h and kxhttp.h, and
# OUT/lib with libkxcom.so, libalmsnd.so and libkxhttp.so built by the given
# C compiler from tests/porting/DeviceCallsStub.c (the device's calls only,
# bodies that do nothing: it is linked against, never run), each from its
# own section of that file.
#
#   scripts/device-sdk-stub.sh CC OUT      e.g. arm-linux-gnueabihf-gcc build-arm-sdk
#
# Then: cmake ... -DCAMREQ_DEVICE_PLATFORM=ON -DCAMREQ_DEVICE_PLATFORM_DIR=OUT
set -euo pipefail
cd "$(dirname "$0")/.."
if [ $# -ne 2 ]; then
  echo "usage: $0 CC OUT" >&2
  exit 2
fi
cc=$1 out=$2
mkdir -p "$out/include" "$out/lib"
cp platform/ipc/include/kxcom.h platform/alarm/include/almsnd.h platform/http/include/kxhttp.h \
  "$out/include/"
stub=tests/porting/DeviceCallsStub.c
section() {  # the includes, then the calls under the heading that matches $1
  awk -v want="$1" '/^\/\* ---- / { inside = index($0, want) > 0; started = 1; }
                    !started || inside { print }' "$stub"
}
for pair in "kxcom:IPC library" "almsnd:Alarm report" "kxhttp:HTTP client"; do
  lib=${pair%%:*}
  section "${pair#*:}" > "$out/lib$lib-stub.c"
  grep -q '^[a-zA-Z].*(' "$out/lib$lib-stub.c" || { echo "no calls for $lib in $stub" >&2; exit 1; }
  "$cc" -shared -fPIC -O2 -Wall -Wextra -Werror -I "$out/include" \
    -Wl,-soname,lib$lib.so.1 -o "$out/lib/lib$lib.so.1" "$out/lib$lib-stub.c"
  ln -sf "lib$lib.so.1" "$out/lib/lib$lib.so"
done
echo "device-sdk-stub: $out ($("$cc" -dumpmachine))"
