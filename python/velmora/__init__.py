"""velmora: models of measured series (inter-arrival times, service times).

Load a model file and generate values from it, fit models to a NumPy array,
and take a trace's statistics:

>>> import velmora
>>> m = velmora.load("examples/map.xml")
>>> x = m.simulate(100_000, seed=7)      # the values `sylvar -seed=7` writes
>>> r = velmora.fit(x)                   # the stages of sylvar-fit
>>> print(r.report())

Failures raise velmora.Error (a ValueError) with the library's message, or
OSError for files that cannot be read or written. Models pickle through their
XML text, so they travel to worker processes (Dask, multiprocessing).
Long computations release the GIL; the library's progress and warnings go to
the logger "velmora".
"""

from ._velmora import (
    ARIMA,
    ARTA,
    CAPP,
    CHEP,
    MAP,
    MEP,
    PH,
    Dist,
    Error,
    Model,
    library_name,
    load,
    model_from_xml,
)
from . import _velmora
from ._results import Candidate, DistributionFit, FitResult, MarginalFit, Stats

__all__ = [
    "ARIMA", "ARTA", "CAPP", "CHEP", "MAP", "MEP", "PH", "Dist", "Model", "Error",
    "Candidate", "DistributionFit", "FitResult", "MarginalFit", "Stats",
    "load", "model_from_xml", "fit", "fit_distribution", "fit_hypererlang", "stats", "library_name",
]


for _cls in (Model, MAP, MEP, PH, ARIMA, ARTA, CAPP, CHEP, Dist, Error):
    _cls.__module__ = "velmora"
del _cls


def _from_xml(text):
    """Rebuilds a pickled model from its XML text."""
    return model_from_xml(text)


def fit(values, model="auto", marginal=None, phases=6, order=None, lags=10):
    """Fits a correlated model to measured values, as sylvar-fit does.

    values: a 1-D sequence of finite numbers (NumPy array, list, ...), at
        least lags + 2 of them, in order of arrival.
    model: "auto" (the marginal's family chooses ARTA, CAPP or CHEP), or
        "arta", "capp", "chep", "map" to force the class.
    marginal: None for the family of lowest AIC among normal, exponential,
        gamma, lognormal, weibull and hypererlang; a family's name
        ("gamma", "hypererlang", ...) to fit that family; or the path of an
        XML model file holding a dist or ph model.
    phases: largest total phase count of a hyper-Erlang marginal, 1..13; the
        count is chosen by AIC.
    order: None to try AR orders 1..3 and MA orders 0..1 for the base
        process; (p, q) to fix them, where each may also be a pair
        (low, high) to try that range.
    lags: autocorrelation lags to fit, lag 1 first (1..100000).

    Returns a FitResult. Raises velmora.Error for values or arguments the fit
    cannot take, and when a stage fails.
    """
    return FitResult(_velmora.fit_trace(values, model, marginal, phases, order, lags))


def fit_distribution(values, family, phases=0):
    """Fits a distribution family to values by its usual estimator.

    values: a 1-D sequence of finite numbers.
    family: the family's name: "exponential", "normal", "lognormal",
        "gamma", "weibull", "uniform", "geometric", "beta", "pearsonV",
        "chisquare", "erlang", "hypoexponential", "hyperexponential",
        "triangular" or "hypererlang".
    phases: total phase count of a hyper-Erlang (1..13, required for it);
        for an Erlang a fixed phase count (0: from the coefficient of
        variation). Other families ignore it.

    Returns a DistributionFit whose .model is a velmora.Dist.
    """
    return DistributionFit(_velmora.fit_distribution(values, family, phases))


def fit_hypererlang(values, phases, max_iterations=2000, tolerance=1e-10):
    """The best hyper-Erlang distribution of `phases` total phases (1..13).

    Runs the EM algorithm for every partition of the phases into branches and
    keeps the result of highest log-likelihood. An iteration stops a
    structure when the log-likelihood gains less than `tolerance` times its
    magnitude, or after `max_iterations`.

    Returns a DistributionFit; its .em says how the EM went (structure kept,
    iterations, whether it converged).
    """
    return DistributionFit(_velmora.fit_hypererlang(values, phases, max_iterations, tolerance))


def stats(values, moments=5, joint_moments=3, lags=5):
    """The statistics of a trace that sylvar's summary shows.

    values: a 1-D sequence of finite numbers (at least one).
    moments: raw moments of orders 0..moments (at most 30).
    joint_moments: joint moments E[X(t)^i X(t+1)^j] for i, j in 0..joint_moments.
    lags: autocovariances and autocorrelations at lags 0..lags (at most 1000).

    Returns a Stats object; Stats.summary() gives sylvar's text.
    """
    return Stats(_velmora.stats(values, moments, joint_moments, lags), values)
