"""Partial-Fourier MRI reconstruction (POCS and one-pass homodyne) on the
toolbox's C++ core.

    image, info = homodyne.recon(kspace, method="homodyne", ranges=[None, (-16, 63)])

kspace: complex64/complex128 (or float32/float64) numpy array, axes x, y, z,
then coils or volumes; centred (k = 0 at index n // 2). C order, Fortran
order and strided views are read in place. The image comes back in the same
axes (a combined coil axis has size 1), Fortran order, float32/complex64, or
float64/complex128 for double input. Options are the toolbox's, in snake_case;
see README.md.
"""

import warnings as _warnings

from . import _core
from ._errors import Error, Warning

__all__ = ["recon", "Plan", "read_ismrmrd", "read_cfl", "write_cfl", "write_png", "phantom", "Error", "Warning"]


def _options(options):
    if "acq" in options:
        if "acquisition" in options:
            raise Error("give the acquisition once: acq and acquisition both given.", "homodyne:badOption")
        options["acquisition"] = options.pop("acq")
    return options


def _warn(warnings):
    for identifier, message in warnings:
        _warnings.warn(Warning(message, identifier), stacklevel=3)


def recon(kspace, **options):
    """(image, info): kspace reconstructed; info is a dict of the call's report."""
    image, info, warnings = _core.recon(kspace, _options(options))
    _warn(warnings)
    return image, info


class Plan:
    """Plans for many k-spaces of kspace_like's size and options:
    plan.recon(kspace) -> (image, info), with the ranges found or given here."""

    def __init__(self, kspace_like, **options):
        self._plan = _core.Plan(kspace_like, _options(options))
        _warn(self._plan.warnings)

    def recon(self, kspace):
        return self._plan.recon(kspace)


def read_ismrmrd(path, remove_oversampling=True):
    """(kspace, acq) of an ISMRMRD raw-data file: kspace x, y, z, coils, then
    the volumes; acq the dict that recon(kspace, acq=acq) takes (the sampled
    ranges and the noise readouts)."""
    kspace, acq, warnings = _core.read_ismrmrd(str(path), remove_oversampling)
    for message in warnings:
        _warnings.warn(Warning(message, "homodyne:badFile"), stacklevel=2)
    return kspace, acq


def read_cfl(base):
    """The complex64 array of base.cfl/base.hdr."""
    return _core.read_cfl(str(base))


def write_cfl(base, array):
    """array as base.cfl/base.hdr (complex single precision)."""
    _core.write_cfl(str(base), array)


def write_png(path, images):
    """A montage of the magnitudes of images (x, y, z, ...) as an 8-bit PNG."""
    _core.write_png(str(path), images)


def phantom(shape):
    """(image, kspace) of the test object on a grid of shape (nx, ny[, nz]):
    complex64, kspace its centred DFT (FFTW)."""
    return _core.phantom(list(shape))
