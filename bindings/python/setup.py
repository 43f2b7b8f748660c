"""Builds the package with the library inside: CMake compiles it from the sources that this folder
belongs to, or that a source distribution brings in the folder libqelrcpt."""

import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext
from setuptools.command.sdist import sdist

HERE = Path(__file__).resolve().parent
BROUGHT = HERE / "libqelrcpt"
SOURCE = BROUGHT if BROUGHT.exists() else HERE.parents[1]
PARTS = ["CMakeLists.txt", "cmake", "include", "qelstdlib", "src", "bindings/python/CMakeLists.txt",
         "bindings/python/native"]  # fmt: skip


def version() -> str:
    project = (SOURCE / "CMakeLists.txt").read_text(encoding="utf-8")
    found = re.search(r"^project\(qelrcpt VERSION ([0-9.]+)", project, re.MULTILINE)
    if found is None:
        sys.exit(f"{SOURCE}/CMakeLists.txt does not say the version")
    return found.group(1)


class CMakeBuild(build_ext):
    def build_extension(self, ext: Extension) -> None:
        build = Path(self.build_temp).resolve() / "library"
        target = Path(self.get_ext_fullpath(ext.name)).resolve().parent.parent
        generator = ["-G", "Ninja"] if shutil.which("ninja") else []
        self._run("cmake", "-S", str(SOURCE), "-B", str(build), *generator,
                  "-DCMAKE_BUILD_TYPE=Release", "-DBUILD_SHARED_LIBS=OFF", "-DQELRCPT_PYTHON=ON",
                  "-DQELRCPT_TOOLS=OFF", "-DQELRCPT_TESTS=OFF", "-DQELRCPT_PYTHON_WHEEL=ON",
                  f"-DPython3_EXECUTABLE={sys.executable}",
                  *os.environ.get("CMAKE_ARGS", "").split())  # fmt: skip
        self._run("cmake", "--build", str(build), "--target", "qelrcpt_python", "--parallel")
        self._run("cmake", "--install", str(build), "--prefix", str(target), "--strip",
                  "--component", "qelrcpt_python")  # fmt: skip

    def _run(self, *command: str) -> None:
        self.announce(" ".join(command), level=2)
        subprocess.run(command, check=True)


class SourceDistribution(sdist):
    """With the library's sources."""

    def make_release_tree(self, base_dir: str, files: "list[str]") -> None:
        super().make_release_tree(base_dir, files)
        ignored = shutil.ignore_patterns("__pycache__", "*.egg-info")
        for part in PARTS:
            target = Path(base_dir) / "libqelrcpt" / part
            target.parent.mkdir(parents=True, exist_ok=True)
            if (SOURCE / part).is_dir():
                shutil.copytree(SOURCE / part, target, ignore=ignored)
            else:
                shutil.copy2(SOURCE / part, target)


setup(
    version=version(),
    ext_modules=[Extension("qelrcpt._native", sources=[], py_limited_api=True)],
    cmdclass={"build_ext": CMakeBuild, "sdist": SourceDistribution},
)
