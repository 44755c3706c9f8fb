#!/usr/bin/env bash
# Installs a built tree into a temporary prefix and builds examples/consumer
# against it twice: through CMake's find_package and with pkg-config's flags.
# Every header under src/ must be installed, no installed file may name the
# source or the build tree, and both programs must run and agree.
#   bash tests/install/check_install.sh <build-dir> [cmake] [generator] [c++ compiler]
set -euo pipefail
source_dir=$(cd "$(dirname "$0")/../.." && pwd)
build_dir=$(cd "$1" && pwd)
cmake_cmd=${2:-cmake}
generator=${3:-Ninja}
cxx=${4:-${CXX:-c++}}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
fail() { echo "FAIL: $*" >&2; exit 1; }

"$cmake_cmd" --install "$build_dir" --prefix "$prefix" >/dev/null

for f in bin/sylvar bin/sylvar-fit lib/libvelmora.a include/velmora/velmora.h lib/pkgconfig/velmora.pc \
         lib/cmake/velmora/velmoraConfig.cmake lib/cmake/velmora/velmoraConfigVersion.cmake; do
    [ -f "$prefix/$f" ] || fail "$f not installed"
done
"$prefix/bin/sylvar-fit" --help | grep -q '^Usage: sylvar-fit' || fail "the installed sylvar-fit gives no usage"
(cd "$source_dir/src" && find . -name '*.h' | sort) > "$work/headers.src"
(cd "$prefix/include/velmora" && find . -name '*.h' | sort) > "$work/headers.installed"
diff "$work/headers.src" "$work/headers.installed" >&2 || fail "installed headers differ from src/"

for tree in "$source_dir" "$build_dir"; do
    if grep -rlF "$tree" "$prefix" >&2; then fail "the files above name $tree"; fi
done

"$cmake_cmd" -S "$source_dir/examples/consumer" -B "$work/consumer" -G "$generator" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$cxx" >/dev/null
grep -qxF "velmora_DIR:PATH=$prefix/lib/cmake/velmora" "$work/consumer/CMakeCache.txt" \
    || fail "find_package(velmora) found another installation"
"$cmake_cmd" --build "$work/consumer" >/dev/null
echo "== built with find_package(velmora)"
"$work/consumer/map_mean" | tee "$work/cmake.out"

flags=$(PKG_CONFIG_PATH="$prefix/lib/pkgconfig" pkg-config --cflags --libs velmora)
echo "== built with pkg-config: $flags"
"$cxx" -O2 "$source_dir/examples/consumer/map_mean.cpp" -o "$work/map_mean_pc" $flags
"$work/map_mean_pc" | tee "$work/pkgconfig.out"

grep -q '^mean of 1000 values: [0-9]' "$work/cmake.out" || fail "no mean printed"
cmp -s "$work/cmake.out" "$work/pkgconfig.out" || fail "the two builds print different results"
echo "install and both consumer builds OK"
