"""Reconstructs every ISMRMRD raw-data file (*.h5) of a folder on a Dask
cluster, one file per task, and writes each image as OUT/NAME.npy.

    python3 examples/dask_folder.py IN OUT [--scheduler HOST:PORT] [--workers N]
                                    [--method homodyne] [--output-form magnitude] [--threads 1]

With --scheduler the tasks go to that cluster; every worker needs the package
(pip install . from the repository on each machine) and must see IN and OUT
under the same paths. Without it a LocalCluster of N worker processes (2 by
default) with one thread each runs them. Each task runs the core's own
threads (--threads, 0 = one per core): on one machine give workers x threads
no more than the cores. The sampled ranges and the noise readouts come from
each file's acquisition, as on the command line; warnings go to the workers'
logs.

From Python:

    with Client(...) as client:
        written = reconstruct_folder(client, "raw", "images", method="homodyne")
"""

import argparse
import os
from glob import glob

import numpy as np

import homodyne


def reconstruct_file(path, out_folder, options):
    """Reconstructs one raw-data file into out_folder/NAME.npy; returns that path."""
    kspace, acq = homodyne.read_ismrmrd(path)
    image, _ = homodyne.recon(kspace, acq=acq, **options)
    out = os.path.join(out_folder, os.path.splitext(os.path.basename(path))[0] + ".npy")
    np.save(out, image)
    return out


def reconstruct_folder(client, in_folder, out_folder, **options):
    """The .npy paths of every *.h5 of in_folder reconstructed on client's cluster, in name order."""
    paths = sorted(glob(os.path.join(in_folder, "*.h5")))
    os.makedirs(out_folder, exist_ok=True)
    return client.gather(client.map(reconstruct_file, paths, out_folder=out_folder, options=options))


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("input")
    parser.add_argument("output")
    parser.add_argument("--scheduler", help="address of a running Dask scheduler")
    parser.add_argument("--workers", type=int, default=2, help="worker processes of the local cluster")
    parser.add_argument("--method", default="pocs")
    parser.add_argument("--output-form", dest="output_form", default="real", help="real, magnitude or complex")
    parser.add_argument("--threads", type=int, default=1, help="the core's threads per task")
    args = parser.parse_args()

    from dask.distributed import Client, LocalCluster

    options = {"method": args.method, "output": args.output_form, "threads": args.threads}
    if args.scheduler:
        client = Client(args.scheduler)
    else:
        client = Client(LocalCluster(n_workers=args.workers, threads_per_worker=1, processes=True,
                                     dashboard_address=None))
    with client:
        for path in reconstruct_folder(client, args.input, args.output, **options):
            print(path)


if __name__ == "__main__":
    main()
