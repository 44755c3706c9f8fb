"""Result objects of the fits and of the trace statistics.

Each is built from the plain dict that the compiled module returns, so that
the figures keep one meaning whichever way the library gathers them.
"""

import numpy as np

from . import _velmora


class MarginalFit:
    """How well a distribution describes the values.

    family: the family's name ("ph" for a phase-type marginal from a file).
    parameters: free parameters counted for AIC and BIC.
    n: number of values.
    loglik, aic, bic: log-likelihood of the values as independent draws,
        2k - 2 loglik, k ln n - 2 loglik.
    ks: Kolmogorov-Smirnov distance.
    model_moments, data_moments: E[X], E[X^2], E[X^3] of the distribution
        and of the values (NaN where the distribution has none).
    """

    def __init__(self, d):
        self.family = d["family"]
        self.parameters = d["parameters"]
        self.n = d["n"]
        self.loglik = d["loglik"]
        self.aic = d["aic"]
        self.bic = d["bic"]
        self.ks = d["ks"]
        self.model_moments = np.array(d["model_moments"])
        self.data_moments = np.array(d["data_moments"])

    def __repr__(self):
        return "<velmora.MarginalFit %s: loglik %.10g, AIC %.10g, KS %.5f>" % (
            self.family, self.loglik, self.aic, self.ks)


class Candidate:
    """One family that the AIC choice of the marginal compared.

    family, phases (hyper-Erlang and Erlang; else 0), fitted (whether the
    family took the values), reason (why not), fit (a MarginalFit or None).
    """

    def __init__(self, d):
        self.family = d["family"]
        self.phases = d["phases"]
        self.fitted = d["fitted"]
        self.reason = d["reason"]
        self.fit = MarginalFit(d["assessment"]) if d["assessment"] is not None else None

    @property
    def name(self):
        """The family, with the phase count in brackets where it has one."""
        return "%s(%d)" % (self.family, self.phases) if self.phases else self.family

    def __repr__(self):
        if self.fit is None:
            return "<velmora.Candidate %s: not fitted (%s)>" % (self.name, self.reason)
        return "<velmora.Candidate %s: AIC %.8g>" % (self.name, self.fit.aic)


class FitResult:
    """A correlated model fitted to a trace by velmora.fit.

    model: the fitted model (velmora.ARTA, CAPP, CHEP or MAP); model.save(path)
        writes the file that sylvar generates from.
    model_class: what it is ("ARTA", "CHEP type 1", "MAP of order 6", ...).
    base_orders: (p, q) of its ARMA base process, or None.
    loglik: the joint log-likelihood of the trace under the model, when the
        class has one; else None.
    aic: the AIC of that joint likelihood when the library counts the
        model's parameters; else None. The marginal's own figures are in
        marginal.loglik and marginal.aic.
    marginal: MarginalFit of the marginal distribution, with
        marginal_name, marginal_source ("AIC choice", "fitted" or "file")
        and marginal_parameters (its key-value text).
    candidates: the families the AIC choice compared (list of Candidate).
    acf_trace, acf_model: autocorrelations at lags 1..lags of the trace and
        of the model.
    """

    def __init__(self, d):
        self.model = d["model"]
        self.model_class = d["model_class"]
        self.base_orders = d["base_orders"]
        self.loglik = d["joint_loglik"]
        self.aic = d.get("joint_aic")
        self.marginal = MarginalFit(d["marginal"])
        self.marginal_name = d["marginal_name"]
        self.marginal_source = d["marginal_source"]
        self.marginal_parameters = d["marginal_parameters"]
        self.candidates = [Candidate(c) for c in d["candidates"]]
        self.acf_trace = d["acf_trace"]
        self.acf_model = d["acf_model"]
        self.values = d["values"]
        self.lags = d["lags"]
        self._report = d["report"]

    def report(self):
        """The fit report: the marginal with its figures and the candidates it
        was chosen from, then the model with the autocorrelations of trace and
        model side by side, as sylvar-fit prints them."""
        return self._report

    def __repr__(self):
        orders = " on ARMA(%d, %d)" % self.base_orders if self.base_orders else ""
        return "<velmora.FitResult %s%s, marginal %s, %d values>" % (
            self.model_class, orders, self.marginal_name, self.values)


class DistributionFit(MarginalFit):
    """A distribution fitted by velmora.fit_distribution or fit_hypererlang.

    model: the fitted distribution as a velmora.Dist (simulate, pdf, cdf,
        save); the figures of MarginalFit describe how it fits the values.
    em: for fit_hypererlang, how the EM went (dict: structure, loglik,
        iterations, converged, structures, unconverged, bins); else None.
    """

    def __init__(self, d):
        super().__init__(d)
        self.model = d["model"]
        self.em = d.get("em")

    def __repr__(self):
        return "<velmora.DistributionFit %s: loglik %.10g, AIC %.10g, KS %.5f>" % (
            self.family, self.loglik, self.aic, self.ks)


class Stats:
    """The statistics of a trace that sylvar's summary shows.

    n, smallest, largest, variance (sample variance, divisor n - 1),
    moments (raw moments of orders 0..k), joint_moments (E[X(t)^i X(t+1)^j]
    as a square array), autocovariances and autocorrelations (lags 0..lags).
    """

    def __init__(self, d, values):
        self.n = d["n"]
        self.smallest = d["smallest"]
        self.largest = d["largest"]
        self.moments = d["moments"]
        self.variance = d["variance"]
        self.joint_moments = d["joint_moments"]
        self.autocovariances = d["autocovariances"]
        self.autocorrelations = d["autocorrelations"]
        self._values = values

    @property
    def mean(self):
        """The first raw moment."""
        return float(self.moments[1]) if len(self.moments) > 1 else float("nan")

    def summary(self):
        """The text of sylvar's trace summary, with its distribution table."""
        return _velmora.trace_summary(self._values)

    def __repr__(self):
        return "<velmora.Stats n=%d, mean %.6g, variance %.6g, range [%.6g, %.6g]>" % (
            self.n, self.mean, self.variance, self.smallest, self.largest)
