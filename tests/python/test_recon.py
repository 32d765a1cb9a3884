"""homodyne.recon and homodyne.Plan: the numpy array and the keyword options
handed to the core as they are meant (axes, memory orders, precision, the
array left untouched), results and reports handed back, faults refused with
one clear error."""

import os
import subprocess
import sys
import warnings

import numpy as np
import pytest

import homodyne
from scans import build_program, data_dir, partial_kspace


def test_one_pass_equals_command_line_bit_for_bit():
    kspace = partial_kspace()
    folder = data_dir("command_line")
    homodyne.write_cfl(os.path.join(folder, "kspace"), kspace)
    subprocess.run([build_program("HOMODYNE_RECON_PROGRAM"), "--quiet", "--method", "homodyne",
                    os.path.join(folder, "kspace.cfl"), os.path.join(folder, "image.cfl")], check=True)
    image, _ = homodyne.recon(kspace, method="homodyne")
    from_command_line = homodyne.read_cfl(os.path.join(folder, "image"))
    assert image.dtype == np.float32 and image.shape == kspace.shape
    assert np.array_equal(image, from_command_line.real) and not from_command_line.imag.any()


def test_memory_orders_views_and_precision_give_one_image():
    kspace = partial_kspace()
    image, _ = homodyne.recon(kspace, method="homodyne", output="complex")
    stacked = np.zeros(kspace.shape + (3,), np.complex64, order="F")
    stacked[..., 1] = kspace
    reversed_y = np.asfortranarray(kspace[:, ::-1])[:, ::-1]
    for same in (np.ascontiguousarray(kspace), stacked[..., 1], reversed_y):
        result, _ = homodyne.recon(same, method="homodyne", output="complex")
        assert result.dtype == np.complex64 and np.array_equal(result, image)
    double, _ = homodyne.recon(kspace.astype(np.complex128), method="homodyne", output="complex")
    assert double.dtype == np.complex128 and np.array_equal(double, image.astype(np.complex128))
    # Real input is complex input with a zero imaginary part.
    real = np.ascontiguousarray(kspace.real)
    from_real, _ = homodyne.recon(real, method="homodyne")
    from_complex, _ = homodyne.recon(real.astype(np.complex64), method="homodyne")
    assert from_real.dtype == np.float32 and np.array_equal(from_real, from_complex)
    assert homodyne.recon(real.astype(np.float64), method="homodyne")[0].dtype == np.float64


PEAK_MEMORY = """
import resource, sys, numpy as np, homodyne
order = sys.argv[1]
kspace = np.zeros((256, 256, 32), np.complex64, order=order)  # 16 MB
kspace[...] = 1e-3j  # every page touched before the baseline
kspace[:, :, 16] = 1.5  # largest part in [1, 2): at unit scale, no scaled copy needed
before = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
homodyne.recon(kspace, method="homodyne", ranges=[None, None, None], output="magnitude")
print(resource.getrusage(resource.RUSAGE_SELF).ru_maxrss - before)
"""


def test_complex64_fortran_order_is_read_in_place():
    # The same call in C order needs one 16 MB canonical copy more.
    def peak_kib(order):
        run = subprocess.run([sys.executable, "-c", PEAK_MEMORY, order], check=True, capture_output=True, text=True)
        return int(run.stdout)

    assert peak_kib("F") + 12 * 1024 < peak_kib("C")


def test_plan_reuse_equals_fresh_calls():
    first = partial_kspace()
    second = np.asfortranarray(3 * partial_kspace()[::-1, :, :])  # mirrored in x, the same sampling
    plan = homodyne.Plan(first, method="homodyne")
    assert np.array_equal(plan.recon(second)[0], homodyne.recon(second, method="homodyne")[0])
    # An array refilled in place is read afresh, not taken for the first.
    buffer = first.copy(order="F")
    plan = homodyne.Plan(buffer, method="homodyne")
    buffer[...] = second
    assert np.array_equal(plan.recon(buffer)[0], homodyne.recon(second, method="homodyne")[0])
    with pytest.raises(homodyne.Error) as error:
        plan.recon(first[:16])
    assert error.value.identifier == "homodyne:badInput"


BAD_CALLS = [
    # (k-space, options, exception type, identifier or None, words the message must hold)
    (np.ones((8, 8), np.int32), {}, TypeError, None, "int32"),
    (np.ones((8, 8), object), {}, TypeError, None, "object"),
    (np.ones((8, 8), np.float16), {}, TypeError, None, "float16"),
    (np.ones((8, 8), ">c8"), {}, TypeError, None, "native"),
    ([[1.0, 2.0]], {}, TypeError, None, "list"),
    (np.array(1, np.complex64), {}, homodyne.Error, "homodyne:badInput", "0-d"),
    (np.zeros((0, 8), np.complex64), {}, homodyne.Error, "homodyne:badInput", ""),
    ("nan", {}, homodyne.Error, "homodyne:badInput", "NaN"),
    ("inf", {}, homodyne.Error, "homodyne:badInput", "Inf"),
    (None, {"partial_fourer": 0.75}, homodyne.Error, "homodyne:badOption", "did you mean partial_fourier"),
    (None, {"ranges": "all"}, homodyne.Error, "homodyne:badOption", "ranges must be"),
    (None, {"ranges": [None, ("a", "b")]}, homodyne.Error, "homodyne:badRange", "ranges y range"),
    (None, {"ranges": [None, (-4, 11, 2)]}, homodyne.Error, "homodyne:badRange", "3 numbers"),
    (None, {"partial_fourier": [None, 0.75j]}, homodyne.Error, "homodyne:badOption", "y entry must be None"),
    (None, {"iterations": {}}, homodyne.Error, "homodyne:badOption", "iterations cannot be a dict"),
    (None, {"method": 3}, homodyne.Error, "homodyne:badOption", "method"),
    (None, {"acq": {"ranges": []}, "acquisition": {"ranges": []}}, homodyne.Error, "homodyne:badOption", "once"),
    (None, {"acq": {"noise": 1}}, homodyne.Error, "homodyne:badOption", "read_ismrmrd"),
]


@pytest.mark.parametrize("kspace, options, kind, identifier, words", BAD_CALLS)
def test_bad_calls_are_refused_clearly(kspace, options, kind, identifier, words):
    good = partial_kspace((16, 12, 1))
    if isinstance(kspace, str):
        good[3, 9, 0] = float(kspace)
    kspace = good if kspace is None or isinstance(kspace, str) else kspace
    original = np.copy(kspace) if isinstance(kspace, np.ndarray) else kspace
    with pytest.raises(kind) as error:
        homodyne.recon(kspace, **options)
    assert words in str(error.value) and "\n" not in str(error.value)
    assert not any(name in str(error.value) for name in ("PartialFourier", "'Ranges'", "Iterations", "Acquisition"))
    if identifier is not None:
        assert error.value.identifier == identifier
    if isinstance(kspace, np.ndarray):
        np.testing.assert_array_equal(kspace, original)


def test_info_and_warnings_as_python_values():
    # Four 2-D slices stacked along z, each a similar k-space: z looks like slices.
    slices = np.stack([partial_kspace((32, 32, 1))[:, :, 0] * g for g in (1, 0.9, 1.1, 0.8)], axis=2)
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        image, info = homodyne.recon(slices, method="homodyne")
    assert [w.message.identifier for w in caught] == ["homodyne:zLooksLikeVolumes"]
    assert issubclass(caught[0].category, homodyne.Warning) and issubclass(homodyne.Warning, UserWarning)
    assert "dims, 2" in str(caught[0].message)
    assert set(info) == {"ranges", "detection", "method", "constraint", "iterations", "change", "residual",
                         "echo_offset", "threads", "combination", "noise_source", "noise_sigma", "adaptive",
                         "warnings", "seconds"}
    assert info["method"] == "homodyne" and isinstance(info["seconds"]["total"], float)
    assert len(info["ranges"]) == 3 and isinstance(info["detection"], list)
    assert isinstance(info["detection"][0], dict)
