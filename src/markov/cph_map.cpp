// The members of CPH that rest on its view as a renewal MAP: absorption
// restarts the chain in tau, so D0 = T and D1 = (-T 1) tau, and consecutive
// variates are independent.
#include "markov/cph.h"
#include "markov/maps.h"

namespace velmora {

MAP CPH::asMAP() const {
    Matrix exitRates = (-T).getRowSums();
    Matrix tauRow(tau.asVector(), MATRIX_ROW);
    return MAP(T, exitRates * tauRow);
}

Matrix CPH::getJointMoments(unsigned first, unsigned last) const { return asMAP().getJointMoments(first, last); }

double CPH::computeLikelihood(Trace* trace) { return asMAP().computeLikelihood(trace); }

}  // namespace velmora
