"""Replications and fits as tasks of Dask's distributed scheduler.

Each task generates one replication of a model by its seed and fits a model
back to it; the model travels to the workers pickled as its XML text. The
same code runs on a cluster: give Client the scheduler's address instead.

    PYTHONPATH=build/python python3 examples/python/dask_replications.py
"""

import sys

import velmora


def replicate(model, seed, n=20000):
    """One replication: n values by seed, the fit, and the figures kept."""
    values = model.simulate(n, seed=seed)
    r = velmora.fit(values, marginal="hypererlang", phases=4, lags=5)
    return {"seed": seed, "mean": float(values.mean()), "model": r.model_class,
            "marginal_aic": r.marginal.aic, "acf_model": r.acf_model, "acf_trace": r.acf_trace}


def run(client, model, seeds, n=20000, timeout=600):
    """The replications of `seeds` as tasks, gathered in the seeds' order;
    raises TimeoutError when they take longer than `timeout` seconds."""
    from dask.distributed import wait

    futures = client.map(replicate, [model] * len(seeds), list(seeds), n=n, pure=False)
    wait(futures, timeout=timeout)
    return client.gather(futures)


if __name__ == "__main__":
    from dask.distributed import Client, LocalCluster

    path = sys.argv[1] if len(sys.argv) > 1 else "examples/chep.xml"
    with LocalCluster(n_workers=2, processes=True, threads_per_worker=1, dashboard_address=None) as cluster, \
            Client(cluster) as client:
        for r in run(client, velmora.load(path), range(8)):
            print("seed %d: mean %.4f, %s, lag-1 acf %.4f (trace %.4f)"
                  % (r["seed"], r["mean"], r["model"], r["acf_model"][0], r["acf_trace"][0]))
