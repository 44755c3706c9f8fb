"""Builds the extension velmora._velmora with the project's CMake, for the
interpreter that runs this script, so that the library is compiled with the
same flags as sylvar. The settings are in pyproject.toml."""

import os
import re
import shutil
import subprocess
import sys

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

ROOT = os.path.dirname(os.path.abspath(__file__))


def project_version():
    with open(os.path.join(ROOT, "CMakeLists.txt")) as f:
        return re.search(r"project\(velmora VERSION ([0-9.]+)", f.read()).group(1)


class CMakeExtension(Extension):
    def __init__(self, name):
        super().__init__(name, sources=[])


class CMakeBuild(build_ext):
    def build_extension(self, ext):
        build = os.path.abspath(os.path.join(self.build_temp, "cmake"))
        configure = ["cmake", "-S", ROOT, "-B", build, "-DCMAKE_BUILD_TYPE=Release", "-DVELMORA_TESTS=OFF",
                     "-DVELMORA_BENCH=OFF", "-DVELMORA_PYTHON=ON", "-DPython_EXECUTABLE=" + sys.executable]
        if shutil.which("ninja"):
            configure += ["-G", "Ninja"]
        subprocess.run(configure, check=True)
        jobs = os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL", str(os.cpu_count() or 1))
        subprocess.run(["cmake", "--build", build, "--target", "_velmora", "-j", jobs], check=True)
        built = [f for f in os.listdir(os.path.join(build, "python", "velmora")) if f.startswith("_velmora.")]
        if not built:
            sys.exit("the CMake build made no extension module (is pybind11 installed for %s?)" % sys.executable)
        target = self.get_ext_fullpath(ext.name)
        os.makedirs(os.path.dirname(target), exist_ok=True)
        shutil.copyfile(os.path.join(build, "python", "velmora", built[0]), target)


setup(version=project_version(), ext_modules=[CMakeExtension("velmora._velmora")], cmdclass={"build_ext": CMakeBuild},
      options={"build": {"build_base": "build-python"}})
