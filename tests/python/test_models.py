"""Models from Python: the values sylvar writes, their statistics, files and pickling."""

import math
import pickle

import numpy as np
import pytest

import velmora
from conftest import example

EXAMPLES = ["map", "ph", "arma", "arta", "capp", "chep", "chep_type2", "dist"]
CLASSES = {"map": velmora.MAP, "ph": velmora.PH, "arma": velmora.ARIMA, "arta": velmora.ARTA,
           "capp": velmora.CAPP, "chep": velmora.CHEP, "chep_type2": velmora.CHEP, "dist": velmora.Dist}


def printed(values):
    """The values as sylvar's trace file prints them: six significant digits."""
    return ["%.6g" % v for v in values]


@pytest.mark.parametrize("name", EXAMPLES)
def test_simulate_gives_the_values_of_sylvar(name, sylvar_run):
    model = velmora.load(example(name))
    assert type(model) is CLASSES[name]
    lines, _ = sylvar_run(example(name), 7, 20000)
    values = model.simulate(20000, seed=7)
    assert values.dtype == np.float64 and values.shape == (20000,)
    assert printed(values) == lines


def test_a_million_map_values_and_the_trace_summary_equal_sylvars(sylvar_run):
    model = velmora.load(example("map"))
    lines, out = sylvar_run(example("map"), 7, 1_000_000)
    values = model.simulate(1_000_000, seed=7)
    assert printed(values) == lines
    # sylvar prints the model's summary, then the trace's from the full-precision values.
    assert out.endswith(velmora.stats(values).summary() + "\n")
    assert model.summary() in out


def test_default_seed_is_sylvars_and_each_call_restarts_the_stream():
    model = velmora.load(example("chep"))
    assert np.array_equal(model.simulate(500), model.simulate(500, seed=13))
    assert np.array_equal(model.simulate(100, seed=3), model.simulate(300, seed=3)[:100])
    assert model.simulate(0).shape == (0,)


@pytest.mark.parametrize("name", EXAMPLES)
def test_pickle_and_file_round_trips_keep_the_values(name, tmp_path):
    model = velmora.load(example(name))
    expected = model.simulate(2000, seed=11)
    copy = pickle.loads(pickle.dumps(model))
    assert type(copy) is type(model)
    assert np.array_equal(copy.simulate(2000, seed=11), expected)
    path = tmp_path / (name + ".xml")
    model.save(path)
    assert path.read_text() == model.to_xml()
    assert np.array_equal(velmora.load(path).simulate(2000, seed=11), expected)


def test_closed_forms_of_the_example_distributions():
    # examples/ph.xml: hypo-exponential of rates 1, 2, 3, whose survival
    # function is 3 e^-x - 3 e^-2x + e^-3x.
    ph = velmora.load(example("ph"))
    x = np.array([0.25, 1.0, 2.5])
    survival = 3 * np.exp(-x) - 3 * np.exp(-2 * x) + np.exp(-3 * x)
    assert np.allclose(ph.cdf(x), 1 - survival, atol=1e-9)
    assert np.allclose(ph.moments(2), [1 + 1 / 2 + 1 / 3, (1 + 1 / 4 + 1 / 9) + (1 + 1 / 2 + 1 / 3) ** 2])
    # examples/dist.xml: gamma of shape 2 and scale 1.5.
    g = velmora.load(example("dist"))
    assert g.family == "gamma"
    assert g.pdf(1.0) == pytest.approx(math.exp(-1 / 1.5) / 1.5 ** 2, rel=1e-9)
    assert g.cdf(1.0) == pytest.approx(1 - math.exp(-1 / 1.5) * (1 + 1 / 1.5), rel=1e-9)
    assert list(g.moments(2)) == pytest.approx([3.0, 13.5])
    assert list(g.acf([1, 5])) == [0.0, 0.0]


def test_pdf_and_cdf_keep_the_shape_and_the_limits():
    m = velmora.load(example("map"))
    grid = np.linspace(0.1, 3, 12).reshape(3, 4)
    assert m.cdf(grid).shape == (3, 4) and m.pdf(grid).shape == (3, 4)
    assert isinstance(m.cdf(1.0), float)
    ends = m.cdf([-np.inf, np.inf, np.nan])
    assert ends[0] == 0 and ends[1] == 1 and np.isnan(ends[2])
    assert np.all(np.diff(m.cdf(np.linspace(0, 5, 50))) >= 0)


def test_acf_of_lags_and_of_a_count_agree_and_match_a_long_trace():
    m = velmora.load(example("map"))
    first = m.acf(5)
    assert first.shape == (5,)
    assert list(m.acf([5, 2])) == [first[4], first[1]]
    s = velmora.stats(m.simulate(400_000, seed=1), lags=5)
    assert np.allclose(s.autocorrelations[1:], first, atol=0.01)


def test_stats_are_the_sample_statistics():
    x = np.array([1.0, 4.0, 2.0, 8.0, 5.0, 7.0])
    s = velmora.stats(x, moments=3, joint_moments=2, lags=2)
    m = x.mean()
    assert s.n == 6 and s.smallest == 1 and s.largest == 8
    assert np.allclose(s.moments, [1, m, np.mean(x ** 2), np.mean(x ** 3)])
    assert s.variance == pytest.approx(np.var(x, ddof=1))
    assert s.joint_moments.shape == (3, 3)
    assert s.joint_moments[1, 1] == pytest.approx(np.sum(x[:-1] * x[1:]) / 5)
    d = x - m
    assert s.autocovariances[1] == pytest.approx(np.sum(d[:-1] * d[1:]) / 6)
    assert s.autocorrelations[2] == pytest.approx(np.sum(d[:-2] * d[2:]) / (3 * np.var(x, ddof=1)))
    assert s.summary().startswith("Trace statistics: \n")


def test_repr_and_help_say_what_the_objects_are():
    m = velmora.load(example("map"))
    assert repr(m).startswith("<velmora.MAP MAP(3), mean 1.05")
    assert "gamma" in repr(velmora.load(example("dist")))
    for f in (velmora.load, velmora.fit, velmora.fit_distribution, velmora.fit_hypererlang, velmora.stats,
              velmora.Model.simulate, velmora.Model.acf, velmora.Model.save):
        assert f.__doc__ and len(f.__doc__) > 60
