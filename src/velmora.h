// velmora: every public header of the toolkit.
#ifndef VELMORA_VELMORA_H
#define VELMORA_VELMORA_H

#include "core/libvelmora_settings.h"
#include "core/misc_string.h"
#include "core/process.h"
#include "core/process_files.h"

#include "config/conf.h"

#include "traces/trace.h"
#include "traces/trace_mc.h"
#include "traces/trace_summary.h"

#include "numerics/jump_chain.h"
#include "numerics/matrix.h"
#include "numerics/misc_linalg.h"
#include "numerics/misc_math.h"
#include "numerics/misc_numerical.h"
#include "numerics/misc_numerical_dist.h"
#include "numerics/misc_optim.h"
#include "numerics/misc_optim_simplex.h"
#include "numerics/misc_polygamma.h"
#include "numerics/misc_sort.h"
#include "numerics/misc_util.h"
#include "numerics/random.h"

#include "distributions/dist.h"
#include "distributions/dist_beta.h"
#include "distributions/dist_chisquare.h"
#include "distributions/dist_deterministic.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_exponential.h"
#include "distributions/dist_gamma.h"
#include "distributions/dist_geometric.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_hyperexponential.h"
#include "distributions/dist_hypoexponential.h"
#include "distributions/dist_hypogeometric.h"
#include "distributions/dist_johnson.h"
#include "distributions/dist_load.h"
#include "distributions/dist_lognormal.h"
#include "distributions/dist_normal.h"
#include "distributions/dist_pearsonv.h"
#include "distributions/dist_pearsonvi.h"
#include "distributions/dist_process.h"
#include "distributions/dist_read.h"
#include "distributions/dist_triangular.h"
#include "distributions/dist_uniform.h"
#include "distributions/dist_weibull.h"

#include "timeseries/arima.h"
#include "timeseries/arta.h"
#include "timeseries/normal_grid_integral.h"

#include "markov/capp.h"
#include "markov/capp_transform.h"
#include "markov/chep.h"
#include "markov/cph.h"
#include "markov/cph_randomization.h"
#include "markov/maps.h"
#include "markov/mep.h"
#include "markov/mep_structs.h"
#include "markov/ph.h"

#include "fitting/arimafit.h"
#include "fitting/artafit.h"
#include "fitting/arta_capp_fit.h"
#include "fitting/cappfit.h"
#include "fitting/distfit.h"
#include "fitting/mepfit.h"
#include "fitting/mmepfit.h"

#include "reporting/plotter.h"

#include "reporting/import_export.h"

#endif
