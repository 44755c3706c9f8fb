// Structure of an acyclic phase-type distribution. Every way from an initial
// phase to absorption is a series of exponential stages, a hypo-exponential
// distribution taken with the probability of the way; the distribution is the
// mixture of these paths.
//
// The series canonical form rests on the identity that a stage of rate r is,
// for any R >= r, with probability r/R one stage of rate R and with
// probability 1 - r/R the stages r and R in series. Splitting every path's
// rates against the sorted rates A of the chain until each path is a tail of
// A gives a series chain through A, entered where each tail begins.
#include "markov/cph.h"

#include <memory>

#include "core/libvelmora_settings.h"
#include "core/misc_string.h"
#include "distributions/dist_hypoexponential.h"
#include "numerics/misc_sort.h"

namespace velmora {

void delete_paths(cph_path_list& paths) {
    for (std::pair<double, HypoExponential*>& path : paths) delete path.second;
    paths.clear();
}

namespace {

// A start vector of another length than the order has no phase for some of
// its entries (or leaves phases without an entry): no path structure.
bool hasPathStructure(const CPH& c) { return c.isAcyclic() && c.getTau().getNumberEntries() == c.getOrder(); }

void checkPathCount(std::size_t count) {
    if (count > CPH::path_limit)
        throw Exception("cph", __LINE__,
                        "Acyclic phase-type distribution has more than " +
                            toString(static_cast<unsigned>(CPH::path_limit)) + " paths.");
}

}  // namespace

// Strict comparisons with 0 decide: a phase with neither an exit nor a
// successor yields no path.
std::vector<CPH::working_path> CPH::generatePath(std::vector<working_path> paths, unsigned state) const {
    const unsigned n = getOrder();
    const std::vector<double>& row = T[state];
    std::vector<working_path> output;
    for (unsigned j = 0; j < n; j++) {
        if (j == state || !(row[j] > 0)) continue;
        std::vector<working_path> next = paths;
        for (working_path& path : next) {
            path.first = path.first * row[j] / -row[state];
            path.second.push_back(-T[j][j]);
        }
        std::vector<working_path> continued = generatePath(std::move(next), j);
        output.insert(output.end(), std::make_move_iterator(continued.begin()),
                      std::make_move_iterator(continued.end()));
        checkPathCount(output.size());
    }
    const double rowSum = T.getRowSum(state);
    if (rowSum < 0) {
        for (working_path& path : paths) path.first = rowSum * path.first / row[state];
        output.insert(output.end(), std::make_move_iterator(paths.begin()), std::make_move_iterator(paths.end()));
        checkPathCount(output.size());
    }
    return output;
}

cph_path_list CPH::generatePaths() const {
    if (!hasPathStructure(*this)) throw Exception("cph", __LINE__, "Acyclic Phase-type distribution expected.");
    const unsigned n = getOrder();
    std::vector<working_path> found;
    for (unsigned i = 0; i < n; i++) {
        if (!(tau(i) > 0)) continue;
        std::vector<working_path> from = generatePath({working_path(tau(i), std::vector<double>{-T[i][i]})}, i);
        found.insert(found.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
        checkPathCount(found.size());
    }

    // Selection ordering by the mean, the sum of 1/rate; the probability
    // plays no part. It is not stable, and paths of equal mean (the same
    // rates in another order) keep the places its exchanges give them.
    const std::size_t count = found.size();
    std::vector<double> means(count);
    for (std::size_t k = 0; k < count; k++)
        means[k] = HypoExponential::hypo_exponential_stats(found[k].second, 0).mean;
    for (std::size_t i = 0; i + 1 < count; i++) {
        std::size_t k = i;
        for (std::size_t j = i + 1; j < count; j++)
            if (means[k] > means[j]) k = j;
        std::swap(found[i], found[k]);
        std::swap(means[i], means[k]);
    }

    // The distributions are owned here until every one exists.
    std::vector<std::unique_ptr<HypoExponential>> made;
    made.reserve(count);
    for (working_path& path : found) made.push_back(std::make_unique<HypoExponential>(std::move(path.second)));
    cph_path_list result;
    result.reserve(count);
    for (std::size_t k = 0; k < count; k++) result.emplace_back(found[k].first, made[k].release());
    return result;
}

std::vector<std::pair<double, Dist*>> CPH::getElementarySeries() {
    cph_path_list paths = generatePaths();
    return std::vector<std::pair<double, Dist*>>(paths.begin(), paths.end());
}

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

// The work list W grows inside its own loop: every split appends the path
// that keeps its rate r, which is matched later from its own end. An entry
// before the current one is final: its probability goes into the start
// vector at once, in the order of W as a closing pass would add it, and its
// rate list is released, so that W holds the rates of pending entries only.
CPH CPH::seriesCanonicalForm() const {
    const char* notAcyclic = "Only acyclic PHs can be transformed into canonical form!";
    if (!hasPathStructure(*this)) throw Exception("cph", __LINE__, notAcyclic);
    std::vector<working_path> W;
    {
        cph_path_list paths = generatePaths();
        W.reserve(paths.size());
        for (const std::pair<double, HypoExponential*>& path : paths)
            W.emplace_back(path.first, heapSort(path.second->getRates()));
        delete_paths(paths);
    }
    const unsigned n = getOrder();
    std::vector<double> A = T.getDiag();
    for (double& a : A) a = -a;
    A = heapSort(A);
    Vector v(n, true);

    for (std::size_t i = 0; i < W.size(); i++) {
        long a = static_cast<long>(n) - 1;
        long b = static_cast<long>(W[i].second.size()) - 1;
        while (b >= 0) {
            while (b >= 0 && a >= 0 && A[a] == W[i].second[b]) {
                a--;
                b--;
            }
            if (b < 0) break;
            // A path's rates are some of the chain's own, so they match A
            // exactly; only rates that compare unequal to themselves (NaN)
            // run out of A.
            if (a < 0) throw Exception("cph", __LINE__, notAcyclic);
            const double r = W[i].second[b];
            const double R = A[a];
            working_path Y = W[i];
            W[i].second[b] = R;
            W[i].first = W[i].first * r / R;
            Y.second.insert(Y.second.begin() + b + 1, R);
            Y.first = Y.first * (1 - r / R);
            W.push_back(std::move(Y));
            if (W.size() > canonical_form_limit)
                throw Exception("cph", __LINE__,
                                "Canonical form needs more than " +
                                    velmora::toString(static_cast<unsigned>(canonical_form_limit)) + " paths.");
        }
        // Every path is now a tail of A and enters where this tail begins.
        v[n - static_cast<unsigned>(W[i].second.size())] += W[i].first;
        std::vector<double>().swap(W[i].second);
    }

    Matrix S(n, n);
    for (unsigned i = 0; i + 1 < n; i++) {
        S(i, i) = -A[i];
        S(i, i + 1) = A[i];
    }
    S(n - 1, n - 1) = -A[n - 1];
    return CPH(S, v);
}

}  // namespace velmora
