// Structure of an acyclic phase-type distribution: the test for the series
// canonical form, in which every phase but the last leaves only to the next
// one, with non-decreasing rates.
#include "markov/cph.h"

#include "core/libvelmora_settings.h"

namespace velmora {

// The last row is not examined, nor is tau: the form is about the order in
// which the phases are passed through.
bool CPH::hasSeriesCF() const {
    if (!valid_ph()) return false;
    const unsigned n = getOrder();
    double before = 0;
    for (unsigned i = 0; i + 1 < n; i++) {
        const std::vector<double>& row = T[i];
        for (unsigned j = 0; j + 1 < n; j++)
            if (j != i && j != i + 1 && row[j] != 0) return false;
        if (row[i] != -row[i + 1]) return false;
        if (-row[i] < before) return false;
        before = -row[i];
    }
    return true;
}

// Placeholder until the enumeration of the paths exists.
std::vector<std::pair<double, Dist*>> CPH::getElementarySeries() {
    throw Exception("cph", __LINE__, "Not implemented.");
}

}  // namespace velmora
