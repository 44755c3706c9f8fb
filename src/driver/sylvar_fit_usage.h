// The text of sylvar-fit --help.
#ifndef VELMORA_DRIVER_SYLVAR_FIT_USAGE_H
#define VELMORA_DRIVER_SYLVAR_FIT_USAGE_H

namespace velmora {

inline const char* const kSylvarFitUsage =
    "Usage: sylvar-fit -trace=FILE -out=MODEL.xml [options]\n"
    "\n"
    "Fits a correlated model to the values of a measured trace and writes it as a\n"
    "model file, from which 'sylvar -model=MODEL.xml' generates synthetic traces.\n"
    "\n"
    "Options (each as -key=value):\n"
    "  -trace=FILE         the measured values, one per line (required)\n"
    "  -traceFormat=0|1    1: the first line holds the number of values (default 0)\n"
    "  -out=FILE           the model file to write (required); it is written only\n"
    "                      when every stage succeeded\n"
    "  -model=CLASS        auto (default): the renewal model of the marginal, an\n"
    "                      ARTA on it and a MAP by EM are compared, and the one of\n"
    "                      lowest joint BIC is written; arta: ARTA with its ARMA\n"
    "                      base fitted by likelihood (order by AIC); map: a MAP with\n"
    "                      Erlang branches by EM (order by AIC up to -phases, or\n"
    "                      -order); mmap: a marked MAP by EM from a multi-class\n"
    "                      trace (a first line that is skipped, then 'class value'\n"
    "                      per line); capp, chep; arta-acf and map-acf fit ARTA and\n"
    "                      MAP to the trace's autocorrelations instead\n"
    "  -marginal=WHAT      a family fitted to the values (normal, exponential,\n"
    "                      gamma, lognormal, weibull, erlang, hypererlang, ...), or\n"
    "                      an XML model file holding a dist or ph model; by default\n"
    "                      the family of lowest AIC among normal, exponential,\n"
    "                      gamma, lognormal, weibull and hypererlang\n"
    "  -phases=N           largest total phase count of a hyper-Erlang, 1..13\n"
    "                      (default 6); the count is chosen by AIC\n"
    "  -order=N            the order of a MAP or marked MAP fitted by EM, 1..64\n"
    "  -lags=N             autocorrelation lags to fit, lag 1 first (default 10)\n"
    "  -pmin=N -pmax=N     AR orders of the base process tried (default 1..3)\n"
    "  -qmin=N -qmax=N     MA orders of the base process tried (default 0..1)\n"
    "  -plot=BASE          also render BASE_acf.png and BASE_cdf.png with gnuplot:\n"
    "                      autocorrelations and distribution of trace and model\n"
    "                      (their scripts and data files stay beside them)\n"
    "  -progress=0|1       stage lines and the fitters' progress on standard error\n"
    "                      (default: 1 when standard error is a terminal)\n"
    "  -debug=1            the fitters' debug lines as well (implies -progress=1)\n"
    "  --help              this text\n"
    "\n"
    "Keys and names are case-insensitive; a repeated key keeps its first value.\n"
    "CAPP and map-acf need a phase-type marginal (exponential, erlang, hypoexponential,\n"
    "hyperexponential, hypererlang or a ph file), CHEP a hyper-Erlang one.\n"
    "The fit report goes to standard output. On any failure one line goes to\n"
    "standard error, no model file is written, and the exit status is 1.\n"
    "\n"
    "Example:\n"
    "  sylvar -model=examples/chep.xml -trace=measured.txt -observations=200000\n"
    "  sylvar-fit -trace=measured.txt -out=fitted.xml -marginal=hypererlang\n"
    "  sylvar -model=fitted.xml -trace=synthetic.txt -observations=200000\n";

}  // namespace velmora

#endif
