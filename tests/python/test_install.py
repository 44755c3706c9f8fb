"""cmake --install puts a package that the interpreter imports from the prefix."""

import os
import pathlib
import subprocess
import sys

import pytest

from conftest import example


def test_cmake_install_gives_an_importable_package(tmp_path):
    build = os.environ.get("VELMORA_BUILD_DIR")
    if not build:
        pytest.skip("run through ctest, which names the build")
    subprocess.run([os.environ.get("VELMORA_CMAKE", "cmake"), "--install", build, "--component", "python",
                    "--prefix", str(tmp_path)], check=True, capture_output=True, timeout=120)
    packages = list(tmp_path.glob("lib/python3*/*-packages/velmora/__init__.py"))
    assert len(packages) == 1
    site = packages[0].parent.parent
    assert (site / "velmora" / "py.typed").exists() and list((site / "velmora").glob("_velmora.*.so"))
    out = subprocess.run([sys.executable, "-c", "import velmora; print(velmora.__file__); "
                          "print(velmora.load(%r).simulate(2, seed=7)[0])" % example("map")],
                         env=dict(os.environ, PYTHONPATH=str(site)), cwd=str(tmp_path), check=True, capture_output=True, text=True,
                         timeout=60).stdout.split()
    assert pathlib.Path(out[0]).is_relative_to(tmp_path)
    assert float(out[1]) == pytest.approx(0.4629102, rel=1e-6)
