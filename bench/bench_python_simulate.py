"""Generation speed of the Python module against the library.

1. Ten million values of examples/map.xml by model.simulate, against
   BM_SimulateMapFile of bench_simulate (the same call from C++).
2. Two threads generating five million values each from two models,
   against one thread generating both.

    PYTHONPATH=build/python /usr/bin/python3 bench/bench_python_simulate.py [build]
"""

import json
import os
import subprocess
import sys
import threading
import time

import velmora

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
BUILD = sys.argv[1] if len(sys.argv) > 1 else os.path.join(ROOT, "build")
MAP = os.path.join(ROOT, "examples", "map.xml")


def best(f, repeat=5):
    times = []
    for _ in range(repeat):
        start = time.perf_counter()
        f()
        times.append(time.perf_counter() - start)
    return min(times)


def cpp_seconds():
    out = subprocess.run([os.path.join(BUILD, "bench", "bench_simulate"), "--benchmark_format=json",
                          "--benchmark_min_time=0"], check=True, capture_output=True, text=True).stdout
    runs = json.loads(out)["benchmarks"]
    return min(r["real_time"] for r in runs) / 1000.0  # milliseconds


def main():
    model = velmora.load(MAP)
    py = best(lambda: model.simulate(10_000_000, seed=7))
    cpp = cpp_seconds()
    print("10 000 000 values of map.xml: Python %.3f s, C++ %.3f s, ratio %.3f" % (py, cpp, py / cpp))

    a, b = velmora.load(MAP), velmora.load(MAP)
    one = best(lambda: (a.simulate(5_000_000, seed=1), b.simulate(5_000_000, seed=2)), 3)

    def two_threads():
        threads = [threading.Thread(target=m.simulate, args=(5_000_000,), kwargs={"seed": s})
                   for m, s in ((a, 1), (b, 2))]
        for t in threads:
            t.start()
        for t in threads:
            t.join()

    two = best(two_threads, 3)
    # Processor time over wall time: near 2 when both threads run at once,
    # whatever else the machine is doing.
    wall, cpu = time.perf_counter(), time.process_time()
    two_threads()
    busy = (time.process_time() - cpu) / (time.perf_counter() - wall)
    print("2 x 5 000 000 values: one thread %.3f s, two threads %.3f s, ratio %.3f; cores busy %.2f"
          % (one, two, two / one, busy))


if __name__ == "__main__":
    main()
