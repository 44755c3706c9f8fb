"""The Dask example: replications and fits on two worker processes equal local ones."""

import sys

import numpy as np
import pytest

import velmora
from conftest import SOURCE_DIR, example

distributed = pytest.importorskip("distributed")
sys.path.insert(0, str(SOURCE_DIR / "examples" / "python"))
import dask_replications  # noqa: E402  (found through the path above, by the workers as well)

# Debian's tornado warns of its own event loop handling.
pytestmark = pytest.mark.filterwarnings("ignore::DeprecationWarning")


def test_replications_on_two_worker_processes_equal_the_local_ones():
    model = velmora.load(example("chep"))
    seeds = range(8)
    with distributed.LocalCluster(n_workers=2, processes=True, threads_per_worker=1, dashboard_address=None,
                                  silence_logs=40, timeout=120) as cluster, distributed.Client(cluster) as client:
        remote = dask_replications.run(client, model, seeds, n=5000, timeout=240)
        assert len({w["id"] for w in client.scheduler_info()["workers"].values()}) == 2
    local = [dask_replications.replicate(model, s, n=5000) for s in seeds]
    for r, l in zip(remote, local):
        assert r["seed"] == l["seed"] and r["model"] == l["model"]
        assert r["mean"] == l["mean"] and r["marginal_aic"] == l["marginal_aic"]
        assert np.array_equal(r["acf_model"], l["acf_model"]) and np.array_equal(r["acf_trace"], l["acf_trace"])
