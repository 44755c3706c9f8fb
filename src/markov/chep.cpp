// The CHEP process class: construction, text forms, summary, the generator of
// both types and the autocorrelations; the type-2 integral per pair of branches
// runs on the shared normal grid, beside the straightforward nested form.
#include "markov/chep.h"

#include <sstream>

#include "config/conf.h"
#include "config/process_files.h"
#include "core/libvelmora_settings.h"
#include "distributions/dist_erlang.h"
#include "distributions/dist_exact.h"
#include "distributions/dist_hypererlang.h"
#include "distributions/dist_hypoexponential.h"
#include "distributions/dist_load.h"
#include "distributions/dist_normal.h"
#include "numerics/matrix.h"
#include "numerics/misc_numerical.h"
#include "numerics/misc_numerical_dist.h"
#include "numerics/misc_util.h"
#include "timeseries/arima.h"
#include "timeseries/normal_grid_integral.h"

namespace velmora {

thread_local HyperErlang* chep_compute_autocorrelation_double_integral_dist = nullptr;
thread_local double chep_compute_autocorrelation_double_integral_acorr = 0.0;
thread_local unsigned chep_compute_autocorrelation_double_integral_branch1 = 0;
thread_local unsigned chep_compute_autocorrelation_double_integral_branch2 = 0;
thread_local double chep_compute_autocorrelation_double_integral_val = 0.0;

namespace {

Exception invalidChep(int line) { return Exception("chep", line, "Invalid CHEP."); }
Exception notChep(int line) { return Exception("chep", line, "Not a CHEP."); }

// Refuses type-2 autocorrelations that need more double integrals (one per
// pair of branches and lag, some 7 ms each) than fit in about 15 s.
void checkType2Work(std::size_t branches, std::size_t lags);
// E^-1(Phi(z)) of one Erlang branch.
double branchTransform(double z, unsigned phases, double rate) {
    return Erlang::erlang_inverse_cdf(as::alnorm(z, false), phases, rate);
}

// Branches i and j, each transform computed anew; the problem goes to the record.
double directIntegral(HyperErlang* h, double rho, unsigned i, unsigned j) {
    chep_compute_autocorrelation_double_integral_dist = h;
    chep_compute_autocorrelation_double_integral_acorr = rho;
    chep_compute_autocorrelation_double_integral_branch1 = i;
    chep_compute_autocorrelation_double_integral_branch2 = j;
    const std::vector<unsigned> phases = h->getPhases();
    const std::vector<double> rates = h->getRates();
    const unsigned phases1 = phases[i], phases2 = phases[j];
    const double rate1 = rates[i], rate2 = rates[j];
    return normal_double_integral([=](double y) { return branchTransform(y, phases1, rate1); },
                                  [=](double x) { return branchTransform(x, phases2, rate2); }, rho);
}

// One branch's E^-1(Phi(z)), kept per grid node once computed.
class BranchFactor : public NormalGridFactor {
public:
    BranchFactor(unsigned phases, double rate, bool exact)
        : phases(phases), rate(rate), transform(exact ? exact::erlang_normal_transform : branchTransform),
          value(normal_grid_intervals + 1), known(normal_grid_intervals + 1, 0) {}
    double atNode(unsigned j, double z) override {
        if (!known[j]) {
            value[j] = transform(z, phases, rate);
            known[j] = 1;
        }
        return value[j];
    }
    double offGrid(double z) override { return transform(z, phases, rate); }

private:
    unsigned phases;
    double rate;
    double (*transform)(double, unsigned, double);
    std::vector<double> value;
    std::vector<unsigned char> known;
};

// (sum of p(i) p(j) I(i, j) over the branch pairs - mean^2) / var per rho:
// for each i the pairs j > i twice, then the pair (i, i).
template <typename Integral>
std::vector<double> type2Autocorrelation(HyperErlang* h, const std::vector<double>& rho, Integral integral) {
    if (h == nullptr) throw Exception("chep", __LINE__, "No hyper-Erlang distribution.");
    const DistStats stats = h->stats(0);
    const std::vector<double> p = h->getProbabilities();
    const std::size_t n = p.size();
    checkType2Work(n, rho.size());
    std::vector<double> result;
    result.reserve(rho.size());
    for (double r : rho) {
        double s = 0;
        for (std::size_t i = 0; i < n; i++) {
            for (std::size_t j = i + 1; j < n; j++) s = s + 2 * p[i] * p[j] * integral(r, i, j);
            s = s + p[i] * p[i] * integral(r, i, i);
        }
        result.push_back((s - stats.mean * stats.mean) / stats.variance);
    }
    return result;
}

}  // namespace

double chep_compute_autocorrelation_double_integral(double a, double b) {
    HyperErlang* h = chep_compute_autocorrelation_double_integral_dist;
    if (h == nullptr) throw Exception("chep", __LINE__, "No hyper-Erlang distribution.");
    const unsigned i = chep_compute_autocorrelation_double_integral_branch1;
    const unsigned j = chep_compute_autocorrelation_double_integral_branch2;
    return branchTransform(a, h->getPhases().at(i), h->getRates().at(i)) *
           branchTransform(b, h->getPhases().at(j), h->getRates().at(j)) *
           Normal::standard_bivariate_normal_pdf(a, b, chep_compute_autocorrelation_double_integral_acorr);
}

double chep_compute_autocorrelation_inner_integral(double y, std::vector<double>) {
    return chep_compute_autocorrelation_double_integral(y, chep_compute_autocorrelation_double_integral_val);
}

double chep_compute_autocorrelation_outer_integral(double x, std::vector<double> params) {
    chep_compute_autocorrelation_double_integral_val = x;
    return RombergIteration(-10.0, 10.0, chep_compute_autocorrelation_inner_integral, params, 0.0001);
}

std::vector<double> chep::compute_type2_autocorrelation_direct(HyperErlang* h, std::vector<double> rho) {
    return type2Autocorrelation(h, rho, [h](double r, std::size_t i, std::size_t j) {
        return directIntegral(h, r, static_cast<unsigned>(i), static_cast<unsigned>(j));
    });
}

// The node values of every branch serve all pairs and all lags of the call.
std::vector<double> chep::compute_type2_autocorrelation(HyperErlang* h, std::vector<double> rho) {
    if (h == nullptr) throw Exception("chep", __LINE__, "No hyper-Erlang distribution.");
    const std::vector<unsigned> phases = h->getPhases();
    const std::vector<double> rates = h->getRates();
    std::vector<BranchFactor> branches;
    branches.reserve(phases.size());
    for (std::size_t i = 0; i < phases.size(); i++) branches.emplace_back(phases[i], rates[i], h->isExact());
    return type2Autocorrelation(h, rho, [&branches](double r, std::size_t i, std::size_t j) {
        return normal_grid_double_integral(branches[i], branches[j], r);
    });
}

// ---------------------------------------------------------------------------
// Construction

chep::chep() : capp() {
    type = PROCESS_CHEP;
    typeName = "CHEP";
}

chep::chep(HyperErlang* h, ARIMA* base, chep_type t) : chep() {
    hyperErlang.reset(h);
    // A missing base would leave nothing to normalise: keep the default one.
    if (base == nullptr) throw Exception("chep", __LINE__, "No base process.");
    this->base.reset(base);
    chepType = t;
    requireHyperErlang()->sortBranches();
    rng.reset();
    init();
}

chep::chep(std::string file, format f) : chep() { load(file, f); }

chep::chep(Config* config) : chep() { load(config); }

chep::chep(XMLConfig* document) : chep() { load(document); }

chep::~chep() = default;

chep_type chep::getType() const { return chepType; }
void chep::setType(chep_type t) { chepType = t; }
HyperErlang* chep::getHyperErlang() { return hyperErlang.get(); }

HyperErlang* chep::requireHyperErlang() const {
    if (!hyperErlang) throw Exception("chep", __LINE__, "No hyper-Erlang distribution.");
    return hyperErlang.get();
}

void chep::resetChepParts() {
    hyperErlang.reset();
    resetParts();
    branchPhases.clear();
    branchRates.clear();
    branchProbabilities.clear();
}

void chep::init() {
    HyperErlang* h = requireHyperErlang();
    const CPH equivalent = h->asCPH();
    marginal = std::make_unique<CPH>(equivalent.getT(), equivalent.getTau());
    normaliseBase();
    clearPaths();
    branchPhases = h->getPhases();
    branchRates = h->getRates();
    branchProbabilities = h->getProbabilities();
    appendBranchPaths(*h, paths, pathMeans);
}

void chep::appendBranchPaths(const HyperErlang& h, cph_path_list& paths, std::vector<double>& pathMeans) {
    const std::vector<unsigned> phases = h.getPhases();
    const std::vector<double> rates = h.getRates();
    const std::vector<double> probabilities = h.getProbabilities();
    for (std::size_t i = 0; i < rates.size(); i++) {
        paths.emplace_back(probabilities[i], new HypoExponential(std::vector<double>(phases[i], rates[i])));
        pathMeans.push_back(phases[i] / rates[i]);
    }
}

// ---------------------------------------------------------------------------
// Text forms

void chep::load(Config* config) {
    resetChepParts();
    // Without a key "distribution" the reader builds nothing.
    std::unique_ptr<Dist> d(loadDistribution(config));
    if (!d || d->getType() != DIST_HYPERERLANG)
        throw Exception("chep", __LINE__, "CHEP requires Hyper-Erlang distribution.");
    hyperErlang.reset(static_cast<HyperErlang*>(d.release()));
    hyperErlang->sortBranches();
    if (config->existsKey("model") && config->getValue("model") != "chep")
        throw Exception("chep", __LINE__, "Not an CHEP model.");
    loadBaseKeys(config);
    chepType = CHEP_TYPE_1;
    if (config->existsKey("type") && config->getValue("type") == "type2") chepType = CHEP_TYPE_2;
    init();
}

void chep::load(XMLConfig* document) {
    resetChepParts();
    XMLElement* element = model_element(document, "chep");
    if (element == nullptr) throw notChep(__LINE__);
    load(element);
}

void chep::load(XMLElement* element) {
    resetChepParts();
    if (element == nullptr || element->getTag() != "chep") throw notChep(__LINE__);
    XMLElement* arima = element->getChildElement("arima");
    if (arima == nullptr) throw invalidChep(__LINE__);
    base->load(arima);
    XMLElement* dist = element->getChildElement("dist");
    if (dist == nullptr) throw invalidChep(__LINE__);
    std::unique_ptr<Dist> d(loadDistribution(dist));
    if (!d || d->getType() != DIST_HYPERERLANG) throw invalidChep(__LINE__);
    hyperErlang.reset(static_cast<HyperErlang*>(d.release()));
    hyperErlang->sortBranches();
    chepType = CHEP_TYPE_1;
    XMLElement* typeElement = element->getChildElement("type");
    if (typeElement != nullptr && typeElement->getValue() == "2") chepType = CHEP_TYPE_2;
    init();
    setExactNumerics(read_numerics_element(element, "chep"));
}


// A type-1 XML text carries the equivalent capp element behind its own.
std::string chep::toString(format f) {
    std::ostringstream out;
    if (f == FORMAT_CONFIG) {
        HyperErlang* h = requireHyperErlang();
        out << "model = chep\n";
        out << h->toString(FORMAT_CONFIG);
        writeBaseText(out);
        if (chepType == CHEP_TYPE_2) out << "type = type2\n";
    } else if (f == FORMAT_XML) {
        out << "<chep>\n";
        out << numerics_element_text(exactNumerics);
        out << requireHyperErlang()->toString(FORMAT_XML);
        out << base->toString(FORMAT_XML);
        if (chepType == CHEP_TYPE_2) out << "<type>2</type>\n";
        out << "</chep>\n";
        if (chepType == CHEP_TYPE_1) {
            out << "<capp>\n";
            out << requireMarginal()->toString(FORMAT_XML);
            out << base->toString(FORMAT_XML);
            out << "</capp>\n";
        }
    } else {
        throw Exception("chep", __LINE__, "Output format not supported for CHEPs.");
    }
    return out.str();
}

// ---------------------------------------------------------------------------
// Summary and analysis

// Type 1 has the joint moments of its equivalent CAPP; type 2 has none in
// closed form.
Matrix chep::getJointMoments(unsigned from, unsigned to) const {
    if (chepType == CHEP_TYPE_2) throw Exception("chep", __LINE__, "Not implemented.");
    return capp::getJointMoments(from, to);
}

namespace {

void checkType2Work(std::size_t branches, std::size_t lags) {
    const unsigned long long limit = 2000;
    const unsigned long long integrals = static_cast<unsigned long long>(branches) * (branches + 1) / 2 * lags;
    if (integrals > limit)
        throw Exception("chep", __LINE__,
                        "The type-2 autocorrelations of " + std::to_string(branches) + " branches at " +
                            std::to_string(lags) + " lags need " + std::to_string(integrals) +
                            " double integrals; the limit is " + std::to_string(limit) + ".");
}

}  // namespace

std::string chep::getSummary(unsigned moments, unsigned jointMoments, unsigned lags) {
    HyperErlang* h = requireHyperErlang();
    const DistStats stats = h->stats(0);
    const SummaryNames names{chepType == CHEP_TYPE_2 ? "CHEP statistics:\nType: 2\n" : "CHEP statistics:\n",
                             "Marginal Distribution:\n", "CHEP Autocorrelation:\n", "CHEP Joint Moments:\n"};
    return summaryText(names, h->toString(FORMAT_CONFIG), stats.mean, stats.variance, moments, jointMoments, lags);
}

std::vector<double> chep::getAutocorrelations(unsigned from, unsigned to) const {
    HyperErlang* h = requireHyperErlang();
    std::vector<double> result;
    if (from == 0) {
        result.push_back(1.0);
        from = 1;
    }
    const DistStats stats = h->stats(0);
    const std::vector<double> rho = base->getAutocorrelations(from, to);
    const std::vector<double> mapped = chepType == CHEP_TYPE_1
                                           ? compute_autocorrelation(stats.mean, stats.variance, rho, paths, pathMeans)
                                           : compute_type2_autocorrelation(h, rho);
    result.insert(result.end(), mapped.begin(), mapped.end());
    return result;
}

Distribution chep::computeDistribution(double lower, double upper) { return capp::computeDistribution(lower, upper); }

double chep::evalCDF(double x) { return requireHyperErlang()->evalCDF(x); }
double chep::evalCCDF(double x) { return requireHyperErlang()->evalCCDF(x); }
double chep::evalPDF(double x) { return requireHyperErlang()->evalPDF(x); }

// ---------------------------------------------------------------------------
// Generation

// Type 1: one base value picks the branch, then an Erlang draw of the own
// stream. Type 2: one uniform of the own stream picks the branch, then one
// base value gives the position inside it.
double chep::getNextRandomVariate() {
    if (chepType == CHEP_TYPE_1) {
        const unsigned i = computePathNextRandomVariate();
        if (i >= branchRates.size()) throw Exception("chep", __LINE__, "No hyper-Erlang distribution.");
        return rng->erlang(branchPhases[i], branchRates[i]);
    }
    if (!rngInitialized) throw Exception("chep", __LINE__, "Initialize Random Number Generation first.");
    if (branchRates.empty()) throw Exception("chep", __LINE__, "No hyper-Erlang distribution.");
    const double u = rng->uniform(0.0, 1.0);
    const double z = base->getNextRandomVariate();
    std::size_t i = first_index_reaching(static_cast<const double*>(branchProbabilities.data()), branchProbabilities.size(), u);
    if (i == branchProbabilities.size()) i = 0;
    if (exactNumerics) return exact::erlang_normal_transform(z, branchPhases[i], branchRates[i]);
    const double v = Normal::normal_cdf(z, 0, 1);
    return Erlang::erlang_inverse_cdf(v, branchPhases[i], branchRates[i]);
}

void chep::setExactNumerics(bool exact) {
    capp::setExactNumerics(exact);
    if (hyperErlang) hyperErlang->setExact(exact);
}

}  // namespace velmora
