"""The file functions: ISMRMRD raw data and .cfl arrays in numpy's axes (x
first), the acquisition as a dict that recon takes back, the phantom's axes,
PNG pictures; missing files refused as homodyne errors."""

import os

import numpy as np
import pytest

import homodyne
from scans import data_dir, partial_kspace, scan_file


def test_raw_file_kspace_and_acquisition():
    _, full = homodyne.phantom((16, 12, 4))
    coils = np.stack([full, 0.5j * full], axis=3)
    path = scan_file(os.path.join(data_dir("files"), "scan.h5"), coils, keep_y=(-3, 5))
    kspace, acq = homodyne.read_ismrmrd(path)
    assert kspace.shape == (16, 12, 4, 2) and kspace.dtype == np.complex64
    kept = slice(6 - 3, 6 + 5 + 1)
    np.testing.assert_array_equal(kspace[:, kept], coils[:, kept])
    assert not kspace[:, : kept.start].any() and not kspace[:, kept.stop:].any()
    assert acq["ranges"][1] == (-3, 5) and acq["noise"].shape == (0, 0)
    from_acq, _ = homodyne.recon(kspace, acq=acq, method="homodyne")
    given, _ = homodyne.recon(kspace, ranges=acq["ranges"], coils=4, method="homodyne")
    assert from_acq.shape == (16, 12, 4, 1)
    np.testing.assert_array_equal(from_acq, given)


def test_cfl_round_trip_in_any_order():
    values = (np.arange(24) + 1j * np.arange(24)[::-1]).reshape(2, 3, 4)  # complex128, C order
    base = os.path.join(data_dir("files"), "array")
    homodyne.write_cfl(base, values)
    back = homodyne.read_cfl(base)
    assert back.dtype == np.complex64 and back.shape == (2, 3, 4)
    np.testing.assert_array_equal(back, values.astype(np.complex64))


def test_phantom_axes_and_png():
    image, kspace = homodyne.phantom((8, 6))
    assert image.shape == kspace.shape == (8, 6) and image.dtype == np.complex64
    assert abs(abs(image[4, 3]) - 0.25) < 1e-6  # the centre, x first: skull 1 and brain -0.75
    path = os.path.join(data_dir("files"), "phantom.png")
    homodyne.write_png(path, homodyne.recon(partial_kspace(), method="homodyne")[0])
    with open(path, "rb") as picture:
        assert picture.read(8) == b"\x89PNG\r\n\x1a\n"


def test_missing_files_are_homodyne_errors():
    for read in (homodyne.read_ismrmrd, homodyne.read_cfl):
        with pytest.raises(homodyne.Error) as error:
            read(os.path.join(data_dir("files"), "missing"))
        assert error.value.identifier == "homodyne:badFile" and "missing" in str(error.value)
