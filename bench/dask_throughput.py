"""The Python package on one machine: the Dask example's throughput on 8
raw-data files with 1 and with 2 worker processes (one thread each, one core
thread per task), and what the Python layer adds to one 256 x 256 x 64,
8-coil call beside the core's own time (info["seconds"]["total"]).

    PYTHONPATH=build/python /usr/bin/python3 bench/dask_throughput.py build

BUILD is a CMake build folder holding python/homodyne and the test helper
tests/tools/make_scan_file, which writes the files. Goals: 2 workers >= 1.7x
the files per second of 1; the Python layer <= 3 % of the core's time.
"""

import os
import subprocess
import sys
import tempfile
import time

import numpy as np

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [os.path.join(HERE, "..", "examples"), os.path.join(HERE, "..", "tests", "python")]

import homodyne  # noqa: E402
import dask_folder  # noqa: E402
from scans import scan_file  # noqa: E402

FILES = 8
OPTIONS = {"method": "pocs", "threads": 1}


def write_files(folder):
    _, kspace = homodyne.phantom((160, 160, 32))
    coils = np.stack([kspace * np.exp(0.7j * c) * (1 + 0.2 * c) for c in range(4)], axis=3)
    for i in range(FILES):
        scan_file(os.path.join(folder, f"scan{i}.h5"), coils * (i + 1), keep_y=(-20, 79))


def files_per_second(workers, raw, out):
    from dask.distributed import Client, LocalCluster

    with LocalCluster(n_workers=workers, threads_per_worker=1, processes=True, dashboard_address=None) as cluster:
        with Client(cluster) as client:
            client.run(lambda: __import__("homodyne"))  # imports and FFTW set-up outside the timing
            started = time.perf_counter()
            dask_folder.reconstruct_folder(client, raw, out, **OPTIONS)
            return FILES / (time.perf_counter() - started)


def plain_processes_per_second(processes, raw, out):
    """Files per second of the same tasks in plain processes without Dask:
    what the machine itself allows at the moment (other jobs share it)."""
    os.makedirs(out, exist_ok=True)
    paths = sorted(os.path.join(raw, name) for name in os.listdir(raw))
    code = f"import sys, dask_folder\nfor p in sys.argv[1:]: dask_folder.reconstruct_file(p, {out!r}, {OPTIONS!r})"
    started = time.perf_counter()
    for process in [subprocess.Popen([sys.executable, "-c", code, *paths[i::processes]]) for i in range(processes)]:
        process.wait()
    return FILES / (time.perf_counter() - started)


def python_overhead():
    """Seconds of a first recon() of the size, of Plan() after it, of
    plan.recon() and of the core's execution within it (info["seconds"]["total"])."""
    _, kspace = homodyne.phantom((256, 256, 64))
    kspace[:, : 128 - 32] = 0
    coils = np.empty(kspace.shape + (8,), np.complex64, order="F")
    for c in range(8):
        coils[..., c] = kspace * np.exp(0.4j * c)
    homodyne.recon(homodyne.phantom((32, 32, 8))[1])  # first-call costs outside the timing
    started = time.perf_counter()
    homodyne.recon(coils, coils=4)
    whole = time.perf_counter() - started
    started = time.perf_counter()
    plan = homodyne.Plan(coils, coils=4)
    planning = time.perf_counter() - started
    started = time.perf_counter()
    _, info = plan.recon(coils)
    execute = time.perf_counter() - started
    return whole, planning, execute, info["seconds"]["total"]


def main():
    build = sys.argv[1] if len(sys.argv) > 1 else "build"
    os.environ["HOMODYNE_MAKE_SCAN_FILE"] = os.path.join(build, "tests", "tools", "make_scan_file")
    os.environ["PYTHONPATH"] = os.pathsep.join(
        [os.path.join(HERE, "..", "examples"), os.environ.get("PYTHONPATH", "")])
    with tempfile.TemporaryDirectory() as folder:
        raw = os.path.join(folder, "raw")
        os.makedirs(raw)
        write_files(raw)
        one = files_per_second(1, raw, os.path.join(folder, "one"))
        two = files_per_second(2, raw, os.path.join(folder, "two"))
        plain = [plain_processes_per_second(n, raw, os.path.join(folder, f"plain{n}")) for n in (1, 2)]
    print(f"Dask, {FILES} files of 160 x 160 x 32 x 4 coils, POCS, 1 core thread per task:")
    print(f"  1 worker {one:.2f} files/s, 2 workers {two:.2f} files/s: {two / one:.2f}x (goal >= 1.7x)")
    print(f"  the same in 1 and 2 plain processes: {plain[1] / plain[0]:.2f}x")
    whole, planning, execute, core = python_overhead()
    print("Python layer on 256 x 256 x 64 x 8 coils, POCS, adaptive combination:")
    print(f"  plan.recon() {execute:.2f} s, the core's time in it {core:.2f} s: "
          f"+{100 * (execute / core - 1):.1f} % in Python (goal <= 3 %)")
    print(f"  recon() {whole:.2f} s as the first call of this size, FFTW measuring its plans; "
          f"Plan() after it (the core's checks, range detection, plans from FFTW's wisdom) {planning:.2f} s")
    print(f"Load average of the machine ({os.cpu_count()} cores) at the end: {os.getloadavg()[0]:.1f}")


if __name__ == "__main__":
    main()
