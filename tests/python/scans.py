"""Partial-Fourier test k-spaces from the package's phantom, and the paths of
the build's programs, shared by the Python tests."""

import os
import subprocess

import numpy as np

import homodyne


def partial_kspace(shape=(32, 24, 8), first_y=-4):
    """The phantom's centred k-space with the planes ky < first_y not
    acquired (exact zeros), complex64 in Fortran order."""
    _, kspace = homodyne.phantom(shape)
    kspace[:, : shape[1] // 2 + first_y] = 0
    return kspace


def build_program(variable):
    """A program of the build tree, named by the test's environment."""
    return os.environ[variable]


def data_dir(name):
    """A fresh folder for one test's files under the build tree."""
    path = os.path.join(os.environ.get("HOMODYNE_TEST_DATA", "/tmp"), name)
    os.makedirs(path, exist_ok=True)
    return path


def scan_file(path, kspace, keep_y):
    """An ISMRMRD raw-data file of kspace (x, y, z, coils) with only the
    readouts of ky in keep_y = (first, last), written by the build's test
    helper make_scan_file."""
    sizes = list(kspace.shape) + [1] * (4 - kspace.ndim)
    raw = path + ".raw"
    np.asarray(kspace, np.complex64).ravel(order="F").tofile(raw)
    subprocess.run([build_program("HOMODYNE_MAKE_SCAN_FILE"), path, "--kspace", raw, *map(str, sizes), "1",
                    "--keep-y", *map(str, keep_y)], check=True, capture_output=True)
    os.remove(raw)
    return path
