"""Every input the module refuses raises a Python exception with a clear message."""

import numpy as np
import pytest

import velmora
from conftest import EXAMPLES, example

MAP = velmora.load(example("map"))


def bad_calls(tmp):
    """(call, exception type, words of the message)."""
    malformed = tmp / "malformed.xml"
    malformed.write_text("<velmora><map><states>")
    other = tmp / "other.xml"
    other.write_text('<?xml version="1.0"?>\n<velmora>\n<mep></mep>\n</velmora>\n')
    grid = np.ones((20, 2))
    return [
        (lambda: MAP.simulate(-1), velmora.Error, "n must be from 0"),
        (lambda: MAP.simulate(1.5), velmora.Error, "n must be a whole number"),
        (lambda: MAP.simulate(10 ** 30), velmora.Error, "n must be from 0"),
        (lambda: MAP.simulate(10 ** 15), velmora.Error, "memory budget"),
        (lambda: MAP.simulate(5, seed=-3), velmora.Error, "seed must be from 0 to 4294967295"),
        (lambda: MAP.simulate(5, seed=2 ** 32), velmora.Error, "seed must be from 0"),
        (lambda: MAP.acf(0), velmora.Error, "lags must be from 1"),
        (lambda: MAP.acf([]), velmora.Error, "lags is empty"),
        (lambda: MAP.acf("3"), velmora.Error, "lags must be a whole number"),
        (lambda: MAP.moments(0), velmora.Error, "k must be from 1 to 30"),
        (lambda: MAP.cdf("x"), velmora.Error, "x must be a number"),
        (lambda: MAP.loglik([]), velmora.Error, "values holds 0 values"),
        (lambda: velmora.fit([]), velmora.Error, "values holds 0 values; at least 12"),
        (lambda: velmora.fit([1.0, float("nan")] * 20), velmora.Error, "values[1] is nan"),
        (lambda: velmora.fit([1.0] * 30 + [float("inf")]), velmora.Error, "values[30] is inf"),
        (lambda: velmora.fit(grid), velmora.Error, "one-dimensional, not of shape (20, 2)"),
        (lambda: velmora.fit("1 2 3"), velmora.Error, "sequence of numbers, not str"),
        (lambda: velmora.fit([1, "a"] * 10), velmora.Error, "sequence of numbers"),
        (lambda: velmora.fit(None), velmora.Error, "sequence of numbers"),
        (lambda: velmora.fit(np.ones(100), model="tree"), velmora.Error, "Unknown model class 'tree'"),
        (lambda: velmora.fit(np.ones(100), phases=0), velmora.Error, "phases must be from 1 to 64"),
        (lambda: velmora.fit(np.ones(100), order=(1,)), velmora.Error, "order must be None or a pair"),
        (lambda: velmora.fit(np.ones(100), order=((3, 1), 0)), velmora.Error, "low order is above"),
        (lambda: velmora.fit(np.ones(100), lags=0), velmora.Error, "lags must be from 1"),
        (lambda: velmora.fit(-np.arange(1.0, 50), marginal="gamma"), velmora.Error, ""),
        (lambda: velmora.fit_distribution([1.0, 2.0], "nosuch"), velmora.Error, "nosuch"),
        (lambda: velmora.fit_distribution([-1.0, 2.0], "exponential"), velmora.Error, "exponential"),
        (lambda: velmora.fit_hypererlang([1.0, 2.0], 65), velmora.Error, "phases must be from 1 to 64"),
        (lambda: velmora.stats([]), velmora.Error, "values holds 0 values"),
        (lambda: velmora.stats([1.0], lags=-1), velmora.Error, "lags must be from 0"),
        (lambda: velmora.load(tmp / "missing.xml"), FileNotFoundError, "missing.xml"),
        (lambda: velmora.load(tmp), IsADirectoryError, str(tmp)),
        (lambda: velmora.load(""), velmora.Error, "file name is empty"),
        (lambda: velmora.load(malformed), velmora.Error, "malformed.xml: "),
        (lambda: velmora.load(other), velmora.Error, "Error loading model."),
        (lambda: velmora.load(EXAMPLES / "consumer"), IsADirectoryError, "consumer"),
        (lambda: MAP.save(tmp / "no" / "such" / "dir.xml"), FileNotFoundError, "dir.xml"),
        (lambda: MAP.save(tmp), IsADirectoryError, str(tmp)),
        (lambda: velmora.model_from_xml("<velmora></velmora>"), velmora.Error, "Error loading model."),
    ]


def test_each_bad_call_raises_its_exception_with_a_clear_message(tmp_path):
    for call, kind, words in bad_calls(tmp_path):
        with pytest.raises(kind) as caught:
            call()
        assert words in str(caught.value), (words, str(caught.value))


def test_library_errors_are_value_errors_and_name_their_source():
    assert issubclass(velmora.Error, ValueError)
    with pytest.raises(velmora.Error) as caught:
        velmora.model_from_xml("<velmora><map><states>1</states><d0>-1</d0><d1></d1></map></velmora>")
    assert caught.value.source


def test_a_thousand_failing_calls_leave_the_interpreter_working(tmp_path):
    calls = bad_calls(tmp_path)
    for i in range(1000):
        call, kind, _ = calls[i % len(calls)]
        with pytest.raises(kind):
            call()
    assert MAP.simulate(3, seed=1).shape == (3,)
