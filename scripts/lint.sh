#!/usr/bin/env bash
# Format and static checks of the tree, with the tools of one fixed version
# (clang-format and clang-tidy 14, as Debian 12 ships them), so that a newer
# tool on a developer's machine cannot turn CI red:
#   1. clang-format --dry-run -Werror over every tracked C/C++ file (.clang-format);
#   2. clang-tidy with the repository's .clang-tidy over the sources of the
#      library and of the platform replacements, as BUILD_DIR compiles them.
#   scripts/lint.sh [BUILD_DIR, default build]
# BUILD_DIR/compile_commands.json is configured when it is missing.
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir="${1:-build}"
readonly wanted_major=14

# The versioned name when it is installed, else the plain one if it is the
# wanted version.
pick_tool() {
  local name="$1" path version
  if path="$(command -v "$name-$wanted_major")"; then
    echo "$path"
    return 0
  fi
  if ! path="$(command -v "$name")"; then
    echo "lint: $name $wanted_major is not installed (scripts/install-deps.sh installs it)" >&2
    return 1
  fi
  version="$("$path" --version | sed -n 's/.*version \([0-9][0-9]*\)\..*/\1/p' | head -n 1)"
  if [ "$version" != "$wanted_major" ]; then
    echo "lint: $path is version ${version:-unknown}, the checks are fixed for $wanted_major" >&2
    return 1
  fi
  echo "$path"
}

clang_format="$(pick_tool clang-format)"
clang_tidy="$(pick_tool clang-tidy)"
jobs="$(nproc)"
status=0

echo "== clang-format ($("$clang_format" --version | head -n 1))"
mapfile -t format_files < <(git ls-files -- '*.c' '*.cc' '*.cpp' '*.h' '*.hpp')
if [ ${#format_files[@]} -eq 0 ]; then
  echo "lint: no tracked C/C++ files (not a git checkout?)" >&2
  exit 1
fi
if ! printf '%s\0' "${format_files[@]}" |
  xargs -0 -n 32 -P "$jobs" "$clang_format" --dry-run -Werror --style=file; then
  echo "lint: clang-format would change the files above (clang-format-$wanted_major -i FILE)" >&2
  status=1
fi

echo "== clang-tidy ($("$clang_tidy" --version | sed -n 's/.*LLVM version/LLVM/p' | head -n 1))"
if [ ! -f "$build_dir/compile_commands.json" ]; then
  cmake -S . -B "$build_dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo > "$build_dir.configure.log"
fi
# The translation units of the library and of the platform replacements,
# from the compile commands.
root="$(pwd -P)"
mapfile -t tidy_files < <(
  sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' "$build_dir/compile_commands.json" |
    grep -E "^$root/(requester|cgi|transport|rtp|http|platform)/" | sort -u
)
if [ ${#tidy_files[@]} -eq 0 ]; then
  echo "lint: no library sources in $build_dir/compile_commands.json" >&2
  exit 1
fi
if ! printf '%s\0' "${tidy_files[@]}" |
  xargs -0 -n 1 -P "$jobs" "$clang_tidy" -p "$build_dir" --quiet 2> >(grep -v "warnings generated" >&2); then
  echo "lint: clang-tidy found the problems above" >&2
  status=1
fi

[ "$status" -eq 0 ] && echo "lint: clean"
exit "$status"
