// MEP: text forms, embedded chain, steady-state vectors, moments, joint
// moments of consecutive intervals and autocorrelations of a matrix
// exponential process. With M = (-D0)^-1 and P = M D1, a stationary interval
// starts in the phase vector pi of P, so that E[X^i] = i! pi M^i 1 and
// E[X0^i X1^j] = i! j! pi M^i P M^j 1.
#include "markov/mep.h"
#include "config/process_files.h"

#include <fstream>
#include <sstream>

#include "config/conf.h"
#include "core/libvelmora_settings.h"
#include "core/misc_string.h"
#include "markov/cph.h"
#include "numerics/misc_linalg.h"
#include "numerics/misc_math.h"

namespace velmora {

namespace {

void setMEPIdentity(process_type& type, std::string& typeName, std::string& modelName) {
    type = PROCESS_MEP;
    typeName = "MEP";
    modelName = "mep";
}

// The first column-of-ones product: the sum of the entries of row 0.
double rowTotal(const Matrix& row) { return row.getRowSum(0); }

}  // namespace

MEP::MEP(Matrix d0, Matrix d1) : D0(std::move(d0)), D1(std::move(d1)) {
    setMEPIdentity(type, typeName, modelName);
}

MEP::MEP(std::string file, format f) {
    setMEPIdentity(type, typeName, modelName);
    load(file, f);
}

MEP::MEP(Config* config) {
    setMEPIdentity(type, typeName, modelName);
    load(config);
}

MEP::MEP(XMLConfig* document) {
    setMEPIdentity(type, typeName, modelName);
    load(document);
}

std::string MEP::getProcessDescription() { return typeName + "(" + velmora::toString(getOrder()) + ")"; }

// ---------------------------------------------------------------------------
// Text forms

void MEP::load(std::string file, format f) { loadProcessFile(*this, file, f, "mep", "Unsupported format!"); }

void MEP::load(Config* config) {
    if (config->existsKey("model")) {
        std::string model = config->getValue("model");
        if (model != "mep" && model != "map") throw Exception("mep", __LINE__, "Not a MEP or MAP.");
    }
    Matrix d0 = config->getValueAsMatrix("d0");
    Matrix d1 = config->getValueAsMatrix("d1");
    D0 = d0;
    D1 = d1;
    ++matrixRevision;
}

void MEP::load(XMLConfig* document) {
    XMLElement* element = model_element(document, "map");
    if (element == nullptr) throw Exception("mep", __LINE__, "Not a MAP/MEP.");
    XMLElement* d0 = element->getChildElement("d0");
    XMLElement* d1 = element->getChildElement("d1");
    if (d0 == nullptr || d1 == nullptr) throw Exception("mep", __LINE__, "Not a valid MAP/MEP description.");
    Matrix m0 = square_matrix_from_list(d0->getValue());
    Matrix m1 = square_matrix_from_list(d1->getValue());
    D0 = m0;
    D1 = m1;
    ++matrixRevision;
}

void MEP::save(std::string file, format f) { saveProcessFile(*this, file, f, "mep"); }

std::string MEP::toString(format f) {
    std::ostringstream out;
    if (f == FORMAT_CONFIG) {
        out << "model = " << modelName << std::endl;
        out << "D0 = " << D0.toString(10) << std::endl;
        out << "D1 = " << D1.toString(10) << std::endl;
    } else if (f == FORMAT_XML) {
        // The element is "map" for both classes; either reads it back.
        out << "<map>" << std::endl;
        out << "<states>" << getOrder() << "</states>" << std::endl;
        out << "<d0>" << D0.toString(10) << std::endl;
        out << "</d0>" << std::endl;
        out << "<d1>" << D1.toString(10) << std::endl;
        out << "</d1>" << std::endl;
        out << "</map>" << std::endl;
    } else {
        throw Exception("mep", __LINE__, "Output format not supported by MEPs.");
    }
    return out.str();
}

std::string MEP::getSummary() { return getSummary(5, 2, 10); }

std::string MEP::getSummary(unsigned moments, unsigned jointMoments, unsigned lags) {
    std::ostringstream out;
    out << "Summary:" << std::endl;
    out << "=========================" << std::endl;
    out << std::endl;
    out << "D0 = " << D0.toString(10) << std::endl;
    out << "D1 = " << D1.toString(10) << std::endl;
    out << "Matrix P = " << getP().toString(10) << std::endl;
    out << "Steady-state vector: " << steady_state_vector().toString(10) << std::endl;
    out << "Steady-state vector of P: " << steady_state_vector_embedded_dtmc().toString(10) << std::endl;
    std::vector<double> m = getMoments(0, moments);
    for (unsigned i = 0; i <= moments; i++) out << "Moment " << i << ": " << m[i] << std::endl;
    out << "Variance: " << getVariance() << std::endl;
    Matrix jm = getJointMoments(1, jointMoments);
    for (unsigned r = 0; r < jm.getNumberRows(); r++)
        for (unsigned c = 0; c < jm.getNumberCols(); c++)
            out << "Joint moment " << r + 1 << ", " << c + 1 << ": " << jm(r, c) << std::endl;
    for (unsigned k = 1; k <= lags; k++)
        out << "Autocorrelation at lag " << k << ": " << getAutocorrelations(k, k)[0] << std::endl;
    return out.str();
}

// ---------------------------------------------------------------------------
// Matrices and steady state

Matrix MEP::getD0() const { return D0; }
Matrix MEP::getD1() const { return D1; }
unsigned MEP::getOrder() const { return D0.getNumberRows(); }

Matrix MEP::getP() const { return ((-D0) ^ -1) * D1; }

Matrix MEP::steady_state_vector_embedded_dtmc() const {
    return compute_steady_state_probability_vector(getP(), true);
}

Matrix MEP::steady_state_vector() const { return compute_steady_state_probability_vector(D0 + D1, false); }

// ---------------------------------------------------------------------------
// Moments and correlations

std::vector<double> MEP::getMoments(unsigned first, unsigned last) const {
    Vector pi(steady_state_vector_embedded_dtmc().getRow(0), true);
    return CPH(D0, pi).getMoments(first, last);
}

double MEP::getVariance() const {
    Vector pi(steady_state_vector_embedded_dtmc().getRow(0), true);
    return CPH(D0, pi).getVariance();
}

Matrix MEP::getJointMoments(unsigned first, unsigned last) const {
    Matrix J(last, last);
    Matrix pi = steady_state_vector_embedded_dtmc();
    Matrix P = getP();
    Matrix minusD0 = -D0;
    for (unsigned i = 1; i <= last; i++) {
        Matrix left = (pi * (minusD0 ^ -static_cast<int>(i))) * P;
        for (unsigned j = 1; j <= last; j++) {
            double factor = static_cast<double>(fac(i)) * static_cast<double>(fac(j));
            J(i - 1, j - 1) = factor * rowTotal(left * (minusD0 ^ -static_cast<int>(j)));
        }
    }
    if (first == 0) {
        Matrix R(last + 1, last + 1);
        std::vector<double> m = getMoments(0, last);
        for (unsigned k = 0; k <= last; k++) {
            R(k, 0u) = m[k];
            R(0u, k) = m[k];
        }
        R.setSubmatrix(1, 1, J);
        return R;
    }
    return J.getSubmatrix(first - 1, last - 1, first - 1, last - 1);
}

std::vector<double> MEP::getAutocorrelations(unsigned first, unsigned last) const {
    Matrix pi = steady_state_vector_embedded_dtmc();
    Matrix P = getP();
    Matrix M = (-D0) ^ -1;
    Matrix piM = pi * M;
    double m1 = rowTotal(piM);
    // theta is the phase vector at an arbitrary time, lambda the event rate.
    Matrix theta = piM * (1.0 / m1);
    double lambda = rowTotal(theta * D1);
    double lambda2 = lambda * lambda;

    std::vector<double> result;
    if (first == 0) {
        result.push_back(1.0);
        first = 1;
    }
    for (unsigned k = first; k <= last; k++) {
        double numerator = lambda2 * rowTotal(((pi * M) * (P ^ static_cast<int>(k))) * M) - 1;
        double denominator = 2 * lambda2 * rowTotal((pi * M) * M) - 1;
        result.push_back(numerator / denominator);
        if (k == last) break;  // last may be the largest unsigned
    }
    return result;
}

// ---------------------------------------------------------------------------
// Operations of a generating model, which a MEP doesn't offer

Distribution MEP::computeDistribution(double, double) { throw Exception("mep", __LINE__, "Not implemented!"); }
double MEP::evalCDF(double) { throw Exception("mep", __LINE__, "Not implemented!"); }
double MEP::evalCCDF(double) { throw Exception("mep", __LINE__, "Not implemented!"); }
double MEP::evalPDF(double) { throw Exception("mep", __LINE__, "Not implemented!"); }
double MEP::computeLikelihood(Trace*) { throw Exception("mep", __LINE__, "Not implemented."); }
void MEP::initRandomNumberGeneration(unsigned) { throw Exception("mep", __LINE__, "Not implemented."); }
double MEP::getNextRandomVariate() { throw Exception("mep", __LINE__, "Not implemented."); }

}  // namespace velmora
