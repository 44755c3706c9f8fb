"""Fits from Python: a model generates values, the fit finds it again."""

import os
import pathlib
import pickle
import subprocess

import numpy as np
import pytest

import velmora
from conftest import SYLVAR, example


@pytest.fixture(scope="module")
def chep_values():
    return velmora.load(example("chep")).simulate(20000, seed=5)


def test_fit_finds_the_class_and_the_correlation_of_its_source(chep_values):
    r = velmora.fit(chep_values, model="chep", marginal="hypererlang", phases=6, lags=5)
    # A CHEP whose correlation a CAPP of the same marginal reaches better comes back as that CAPP.
    assert isinstance(r.model, (velmora.CHEP, velmora.CAPP))
    assert r.marginal_name == "hypererlang" and r.marginal.n == 20000
    assert r.acf_trace.shape == r.acf_model.shape == (5,)
    assert np.max(np.abs(r.acf_model - r.acf_trace)) < 0.05
    assert np.allclose(r.acf_trace, velmora.stats(chep_values, lags=5).autocorrelations[1:])
    assert np.allclose(r.acf_model, r.model.acf(5))
    assert r.model.moments(1)[0] == pytest.approx(np.mean(chep_values), rel=0.01)


def test_the_default_marginal_is_the_lowest_aic_of_the_candidates(chep_values):
    r = velmora.fit(chep_values, model="arta-acf", lags=3, order=(1, 0))
    assert r.base_orders == (1, 0)
    fitted = [c for c in r.candidates if c.fitted]
    assert r.marginal.aic == min(c.fit.aic for c in fitted)
    assert "hypererlang(1)" in [c.name for c in r.candidates]


def test_a_map_fit_has_a_joint_likelihood(chep_values):
    r = velmora.fit(chep_values, model="map", marginal="hypererlang", phases=3, lags=3)
    assert isinstance(r.model, velmora.MAP)
    assert r.loglik == pytest.approx(r.model.loglik(chep_values))


def test_fitted_models_travel_as_files_and_pickles(chep_values, tmp_path):
    r = velmora.fit(chep_values, marginal="hypererlang", lags=3)
    r.model.save(tmp_path / "fitted.xml")
    from_file = velmora.load(tmp_path / "fitted.xml").simulate(1000, seed=2)
    assert np.array_equal(pickle.loads(pickle.dumps(r.model)).simulate(1000, seed=2), from_file)
    assert np.allclose(from_file, r.model.simulate(1000, seed=2), rtol=1e-5)


def test_distribution_fits_recover_their_source():
    gamma = velmora.load(example("dist"))  # shape 2, scale 1.5
    x = gamma.simulate(50000, seed=3)
    g = velmora.fit_distribution(x, "gamma")
    assert g.family == "gamma" and isinstance(g.model, velmora.Dist)
    assert list(g.model.moments(2)) == pytest.approx([3.0, 13.5], rel=0.03)
    # The maximum-likelihood exponential has the sample mean.
    e = velmora.fit_distribution(x, "exponential")
    assert e.model.moments(1)[0] == pytest.approx(np.mean(x), rel=1e-9)
    assert e.aic > g.aic
    h = velmora.fit_hypererlang(x, 2)
    assert h.family == "hypererlang" and sum(h.em["structure"]) == 2
    assert h.loglik >= e.loglik


def test_the_report_is_the_one_sylvar_fit_prints(sylvar_run, tmp_path):
    fit = pathlib.Path(os.environ.get("VELMORA_SYLVAR_FIT", SYLVAR.parent / "sylvar-fit"))
    if not fit.is_file():
        pytest.skip("sylvar-fit is not built")
    lines, _ = sylvar_run(example("arta"), 3, 4000)
    (tmp_path / "trace.txt").write_text("\n".join(lines) + "\n")
    printed = subprocess.run([str(fit), "-trace=" + str(tmp_path / "trace.txt"), "-out=" + str(tmp_path / "m.xml"),
                              "-model=arta-acf", "-marginal=gamma", "-lags=4"], check=True, capture_output=True, text=True,
                             timeout=300).stdout
    # sylvar-fit's default class is chosen by likelihood; arta-acf is the fit to autocorrelations.
    report = velmora.fit(np.array([float(v) for v in lines]), model="arta-acf", marginal="gamma", lags=4).report()
    body = report[report.index("Marginal"):]
    assert body in printed
