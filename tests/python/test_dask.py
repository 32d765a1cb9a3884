"""The Dask example: a folder of raw-data files reconstructed on a local
cluster of two worker processes gives the images of a serial loop."""

import os
import sys

import numpy as np

import homodyne
from scans import data_dir, scan_file

sys.path.insert(0, os.environ["HOMODYNE_EXAMPLES"])
import dask_folder  # noqa: E402


def test_cluster_images_equal_serial_loop():
    from dask.distributed import Client, LocalCluster

    raw = data_dir("dask/raw")
    for i, gain in enumerate((1.0, 2.5, 0.3, 4.0)):
        _, kspace = homodyne.phantom((24, 20, 6))
        scan_file(os.path.join(raw, f"scan{i}.h5"), gain * kspace, keep_y=(-4, 9))
    options = {"method": "homodyne", "threads": 1}
    # The workers import the example as the test does.
    os.environ["PYTHONPATH"] = os.environ["HOMODYNE_EXAMPLES"] + os.pathsep + os.environ.get("PYTHONPATH", "")
    with LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None) as cluster:
        with Client(cluster) as client:
            written = dask_folder.reconstruct_folder(client, raw, data_dir("dask/images"), **options)
    assert [os.path.basename(p) for p in written] == [f"scan{i}.npy" for i in range(4)]
    serial = data_dir("dask/serial")
    for i, path in enumerate(written):
        path_serial = dask_folder.reconstruct_file(os.path.join(raw, f"scan{i}.h5"), serial, options)
        np.testing.assert_array_equal(np.load(path), np.load(path_serial))
