// The entry of the correlated fits: the family of the marginal chooses the
// model. Hyper-Erlang and hyper-exponential marginals give a type-1 chep
// (or a capp, see cappfit::fit_chep), hypo-exponential marginals and
// acyclic CPHs of order 2 and above a capp, every other family and a CPH
// of order 1 an ARTA.
#ifndef VELMORA_FITTING_ARTA_CAPP_FIT_H
#define VELMORA_FITTING_ARTA_CAPP_FIT_H

#include <vector>

namespace velmora {

class CPH;
class Dist;
class Process;
class Trace;

// The result is new and the caller's. On success the marginal passed in
// belongs to the fit: the result holds it, or it was replaced by an
// equivalent one of another class and deleted. On failure it stays the
// caller's (a CPH may come back rewritten into an equivalent chain).
Process* fit_arta_chep_capp(Dist* d, Trace* t, unsigned lags, unsigned p, unsigned q);
Process* fit_arta_chep_capp(CPH* c, Trace* t, unsigned lags, unsigned p, unsigned q);
Process* fit_arta_chep_capp(Dist* d, std::vector<double> ac, unsigned p, unsigned q);
Process* fit_arta_chep_capp(CPH* c, std::vector<double> ac, unsigned p, unsigned q);
Process* fit_arta_chep_capp(Dist* d, Trace* t, unsigned lags, unsigned pMin, unsigned pMax, unsigned qMin,
                            unsigned qMax);
Process* fit_arta_chep_capp(CPH* c, Trace* t, unsigned lags, unsigned pMin, unsigned pMax, unsigned qMin,
                            unsigned qMax);
Process* fit_arta_chep_capp(Dist* d, std::vector<double> ac, unsigned pMin, unsigned pMax, unsigned qMin,
                            unsigned qMax);
// Throws "Not a valid PH distribution!" and "Not an acyclic PH
// distribution!" for such chains.
Process* fit_arta_chep_capp(CPH* c, std::vector<double> ac, unsigned pMin, unsigned pMax, unsigned qMin,
                            unsigned qMax);

}  // namespace velmora

#endif
