"""Builds homodyne._core from the repository's C++ sources with the flags
CMakeLists.txt gives the core: results are bit for bit in single precision,
so no fused multiply-add and no value-changing optimisation. Debian packages
needed: g++, pkg-config, libfftw3-dev, libismrmrd-dev, libpng-dev, python3-dev,
python3-pybind11.

    python3 -m venv --system-site-packages VENV
    VENV/bin/pip install --no-build-isolation .
"""

import subprocess
from glob import glob

from pybind11.setup_helpers import ParallelCompile, Pybind11Extension
from setuptools import setup

# Two compilers at most: the build machine is shared.
ParallelCompile("HOMODYNE_BUILD_JOBS", default=2, max=2).install()

MODULE_SOURCES = [  # the numeric module's part the core uses; the gateway is Octave's
    "src/homodyne/filter_weights.cpp",
    "src/homodyne/homodyne_filter.cpp",
    "src/homodyne/pow_third.cpp",
    "src/phase/phase_transfer.cpp",
]
SOURCES = sorted(glob("src/front/python/*.cpp")) + MODULE_SOURCES + sorted(glob("src/recon/*.cpp")) + sorted(glob("src/io/*.cpp"))


def pkg_config(option):
    """Flags of the libraries the core and the readers use, as Debian installs them."""
    words = subprocess.check_output(["pkg-config", option, "hdf5", "fftw3f", "libpng"], text=True).split()
    return [w[2:] for w in words]


core = Pybind11Extension(
    "homodyne._core",
    SOURCES,
    include_dirs=["src"] + pkg_config("--cflags-only-I"),
    library_dirs=pkg_config("--libs-only-L"),
    runtime_library_dirs=pkg_config("--libs-only-L"),
    libraries=["ismrmrd"] + pkg_config("--libs-only-l"),
    cxx_std=17,
    extra_compile_args=["-O3", "-ffp-contract=off", "-fno-fast-math", "-fno-math-errno"],
)

# Objects under out/, away from CMake's build folders.
setup(ext_modules=[core], options={"build": {"build_base": "out/setuptools"}})
