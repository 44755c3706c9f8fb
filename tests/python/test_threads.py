"""Threads: models generate at once without meeting, and fits wait their turn."""

import threading

import numpy as np

import velmora
from conftest import example

NAMES = ["map", "ph", "arma", "arta", "capp", "chep", "chep_type2", "dist"]


def run_threads(jobs):
    results = [None] * len(jobs)
    errors = []

    def work(i, job):
        try:
            results[i] = job()
        except Exception as e:  # reported below, so that a failure names its job
            errors.append((i, e))

    threads = [threading.Thread(target=work, args=(i, job)) for i, job in enumerate(jobs)]
    for t in threads:
        t.start()
    for t in threads:
        t.join()
    assert not errors
    return results


def test_separate_models_in_threads_give_the_values_of_one_thread():
    models = [velmora.load(example(n)) for n in NAMES]
    expected = [m.simulate(50000, seed=9) for m in models]
    got = run_threads([lambda m=m: m.simulate(50000, seed=9) for m in models])
    for name, e, g in zip(NAMES, expected, got):
        assert np.array_equal(e, g), name


def test_one_model_shared_by_threads_serves_each_call_whole():
    m = velmora.load(example("arta"))
    expected = {s: m.simulate(30000, seed=s) for s in range(4)}
    got = run_threads([lambda s=s: m.simulate(30000, seed=s) for s in range(4)])
    for s in range(4):
        assert np.array_equal(got[s], expected[s])


def test_fits_and_analysis_run_beside_generation():
    values = velmora.load(example("chep")).simulate(5000, seed=1)
    alone = velmora.fit(values, marginal="hypererlang", phases=3, lags=3).acf_model
    arta = velmora.load(example("arta"))
    expected = arta.simulate(200000, seed=4)
    jobs = [lambda: velmora.fit(values, marginal="hypererlang", phases=3, lags=3).acf_model,
            lambda: velmora.fit(values, marginal="hypererlang", phases=3, lags=3).acf_model,
            lambda: arta.simulate(200000, seed=4),
            lambda: velmora.load(example("capp")).acf(4)]
    got = run_threads(jobs)
    assert np.array_equal(got[0], alone) and np.array_equal(got[1], alone)
    assert np.array_equal(got[2], expected)
