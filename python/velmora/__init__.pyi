import os
from typing import Any, Dict, List, Optional, Sequence, Tuple, Union, overload

import numpy as np
import numpy.typing as npt

_Path = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]
_Values = npt.ArrayLike
_Order = Union[int, Tuple[int, int]]

library_name: str

class Error(ValueError):
    source: str

class Model:
    def simulate(self, n: int, seed: int = 13) -> npt.NDArray[np.float64]: ...
    def acf(self, lags: Union[int, Sequence[int]]) -> npt.NDArray[np.float64]: ...
    def moments(self, k: int) -> npt.NDArray[np.float64]: ...
    @overload
    def pdf(self, x: float) -> float: ...
    @overload
    def pdf(self, x: npt.ArrayLike) -> Union[float, npt.NDArray[np.float64]]: ...
    @overload
    def cdf(self, x: float) -> float: ...
    @overload
    def cdf(self, x: npt.ArrayLike) -> Union[float, npt.NDArray[np.float64]]: ...
    def loglik(self, values: _Values) -> float: ...
    def save(self, path: _Path) -> None: ...
    def to_xml(self) -> str: ...
    def summary(self) -> str: ...
    @property
    def kind(self) -> str: ...
    def __reduce__(self) -> Tuple[Any, Tuple[str]]: ...

class MAP(Model): ...
class MEP(Model): ...
class PH(Model): ...
class ARIMA(Model): ...
class ARTA(Model): ...
class CHEP(Model): ...
class CAPP(Model): ...

class Dist(Model):
    @property
    def family(self) -> str: ...

class MarginalFit:
    family: str
    parameters: int
    n: int
    loglik: float
    aic: float
    bic: float
    ks: float
    model_moments: npt.NDArray[np.float64]
    data_moments: npt.NDArray[np.float64]

class Candidate:
    family: str
    phases: int
    fitted: bool
    reason: str
    fit: Optional[MarginalFit]
    @property
    def name(self) -> str: ...

class FitResult:
    model: Model
    model_class: str
    base_orders: Optional[Tuple[int, int]]
    loglik: Optional[float]
    aic: Optional[float]
    marginal: MarginalFit
    marginal_name: str
    marginal_source: str
    marginal_parameters: str
    candidates: List[Candidate]
    acf_trace: npt.NDArray[np.float64]
    acf_model: npt.NDArray[np.float64]
    values: int
    lags: int
    def report(self) -> str: ...

class DistributionFit(MarginalFit):
    model: Dist
    em: Optional[Dict[str, Any]]

class Stats:
    n: int
    smallest: float
    largest: float
    moments: npt.NDArray[np.float64]
    variance: float
    joint_moments: npt.NDArray[np.float64]
    autocovariances: npt.NDArray[np.float64]
    autocorrelations: npt.NDArray[np.float64]
    @property
    def mean(self) -> float: ...
    def summary(self) -> str: ...

def load(path: _Path) -> Model: ...
def model_from_xml(text: str) -> Model: ...
def fit(
    values: _Values,
    model: str = "auto",
    marginal: Optional[Union[str, _Path]] = None,
    phases: int = 6,
    order: Optional[Tuple[_Order, _Order]] = None,
    lags: int = 10,
) -> FitResult: ...
def fit_distribution(values: _Values, family: str, phases: int = 0) -> DistributionFit: ...
def fit_hypererlang(
    values: _Values, phases: int, max_iterations: int = 2000, tolerance: float = 1e-10
) -> DistributionFit: ...
def stats(values: _Values, moments: int = 5, joint_moments: int = 3, lags: int = 5) -> Stats: ...
