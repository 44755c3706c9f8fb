#!/usr/bin/env bash
# Builds velmora, sylvar and sylvar-fit, then runs the example model or the test suite.
#   bash build.sh example   generate a trace from examples/map.xml and print the summaries
#   bash build.sh test      build with warnings as errors and run every test
#   bash build.sh python    build the Python module and run its tests only
#   bash build.sh tsan      build the fitting tests under ThreadSanitizer and run the concurrent fits
#   bash build.sh fuzz [SECONDS [SEED]]  build the fuzz targets with clang,
#                           replay the corpus in fuzz/corpus, then fuzz each
#                           target for SECONDS (default 60), from SEED when
#                           given (the same seed explores the same inputs in the
#                           same order); fails on a crash, a leak, a run over
#                           10 s or over 2 GB
set -euo pipefail
cd "$(dirname "$0")"

packages="cmake ninja-build g++ libgtest-dev libbenchmark-dev gnuplot-nox"
# The install test builds examples/consumer with pkg-config's flags as well.
packages="$packages pkg-config"
# The Python module, its tests and the Dask example, for Debian's python3.
packages="$packages python3-dev python3-numpy pybind11-dev python3-pybind11 python3-pytest python3-distributed"
packages="$packages python3-setuptools python3-wheel python3-pip python3-venv"
# The fuzz targets need clang with its libFuzzer and sanitizer runtimes.
[ "${1:-test}" = fuzz ] && packages="$packages clang-14 libclang-rt-14-dev"
missing=""
for p in $packages; do
    dpkg -s "$p" >/dev/null 2>&1 || missing="$missing $p"
done
if [ -n "$missing" ]; then
    echo "Installing:$missing"
    sudo_cmd=""
    [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
    $sudo_cmd apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -qq $missing
fi

jobs=$(nproc 2>/dev/null || echo 2)
# A compiler cache, when the machine has one, makes repeated builds cheap.
launcher=""
command -v ccache >/dev/null 2>&1 && launcher="-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"
case "${1:-test}" in
example)
    cmake -S . -B build $launcher -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
    cmake --build build --target sylvar sylvar-fit -j "$jobs"
    ./build/sylvar -model=examples/map.xml -trace=build/example_trace.txt -seed=7 -observations=10000
    ;;
test)
    cmake -S . -B build $launcher -G Ninja -DCMAKE_BUILD_TYPE=Release -DVELMORA_WERROR=ON -DVELMORA_BENCH=ON >/dev/null
    cmake --build build -j "$jobs"
    ctest --test-dir build --output-on-failure -j "$jobs"
    ;;
python)
    cmake -S . -B build $launcher -G Ninja -DCMAKE_BUILD_TYPE=Release -DVELMORA_WERROR=ON -DVELMORA_BENCH=ON >/dev/null
    cmake --build build --target velmora_python sylvar -j "$jobs"
    ctest --test-dir build --output-on-failure -R '^python_module$'
    ;;
sanitize)
    # At -O1 with line tables (the sanitizers' reports need no more) the
    # build takes a third less time than at -O2 with full debug information.
    cmake -S . -B build-sanitize $launcher -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g1 -DNDEBUG" -DVELMORA_WERROR=ON -DVELMORA_SANITIZE=ON >/dev/null
    cmake --build build-sanitize -j "$jobs"
    ctest --test-dir build-sanitize --output-on-failure -j "$jobs"
    ;;
tsan)
    # Only the fitting tests are built, at -O1 with line tables to keep it
    # quick: the fits that run side by side on threads, watched by
    # ThreadSanitizer.
    cmake -S . -B build-tsan $launcher -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g1" \
        -DVELMORA_WERROR=ON -DVELMORA_TSAN=ON -DVELMORA_PYTHON=OFF >/dev/null
    cmake --build build-tsan --target test_fitting -j "$jobs"
    TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" \
        ctest --test-dir build-tsan --output-on-failure -R '^ConcurrentFits\.'
    ;;
fuzz)
    seconds="${2:-60}"
    seed=""
    [ -n "${3:-}" ] && seed="-seed=$3"
    cmake -S . -B build-fuzz $launcher -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++-14 \
        -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g1 -DNDEBUG" \
        -DVELMORA_FUZZ=ON -DVELMORA_TESTS=OFF -DVELMORA_PYTHON=OFF >/dev/null
    cmake --build build-fuzz -j "$jobs"
    limits="-rss_limit_mb=2048 -timeout=10 -max_len=4096"
    mkdir -p build-fuzz/artifacts
    for target in xml_model config_model readers fitters; do
        binary="build-fuzz/fuzz/fuzz_$target"
        echo "== fuzz_$target: replaying fuzz/corpus/$target"
        # Given files instead of folders, libFuzzer runs each of them once.
        "$binary" $limits -artifact_prefix=build-fuzz/artifacts/ fuzz/corpus/"$target"/*
        # New inputs go to a scratch folder, the checked-in corpus stays as it is.
        work="build-fuzz/corpus/$target"
        mkdir -p "$work"
        echo "== fuzz_$target: fuzzing for $seconds s"
        "$binary" $limits $seed -max_total_time="$seconds" -print_final_stats=1 \
            -artifact_prefix=build-fuzz/artifacts/ "$work" fuzz/corpus/"$target"
    done
    ;;
*)
    echo "usage: bash build.sh [example|test|python|sanitize|tsan|fuzz [SECONDS [SEED]]]" >&2
    exit 2
    ;;
esac
