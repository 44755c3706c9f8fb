"""Shared fixtures: where the examples and the sylvar program are.

The build's test run (ctest, bash build.sh test) sets VELMORA_SOURCE_DIR and
VELMORA_SYLVAR; run by hand, the checkout and build/sylvar are used.
"""

import os
import pathlib
import subprocess

import pytest

SOURCE_DIR = pathlib.Path(os.environ.get("VELMORA_SOURCE_DIR", pathlib.Path(__file__).resolve().parents[2]))
EXAMPLES = SOURCE_DIR / "examples"
SYLVAR = pathlib.Path(os.environ.get("VELMORA_SYLVAR", SOURCE_DIR / "build" / "sylvar"))


def example(name):
    return str(EXAMPLES / (name + ".xml"))


@pytest.fixture
def sylvar_run(tmp_path):
    """Runs sylvar on a model; gives its trace file's lines and its output."""
    if not SYLVAR.exists():
        pytest.skip("sylvar is not built")

    def run(model, seed, observations):
        trace = tmp_path / ("trace_%d.txt" % seed)
        out = subprocess.run(
            [str(SYLVAR), "-model=" + model, "-trace=" + str(trace), "-seed=%d" % seed,
             "-observations=%d" % observations],
            check=True, capture_output=True, text=True, timeout=300).stdout
        return trace.read_text().splitlines(), out

    return run
