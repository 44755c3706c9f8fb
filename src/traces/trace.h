// A trace: a sequence of measured or generated values, kept in order of
// arrival. It reads and writes two text layouts (plain, and counted with the
// number of values on a first line), replays its values as a stream and
// answers for sample statistics like any other process.
#ifndef VELMORA_TRACES_TRACE_H
#define VELMORA_TRACES_TRACE_H

#include <string>
#include <vector>

#include "core/process.h"

namespace velmora {

class Matrix;
class Config;

class Trace : public Process {
public:
    Trace();
    explicit Trace(std::vector<double> values);
    Trace(std::string file, bool traceFormat);
    explicit Trace(Config* config);
    ~Trace() override = default;

    // Storage and files. traceFormat true is the counted layout.
    void load(std::string file, bool traceFormat);
    void load(std::string file, format f) override;  // plain layout; f is not looked at
    void load(Config* config);
    void save(std::string file, bool traceFormat);
    void save(std::string file, format f) override;  // plain layout; f is not looked at
    std::string toString(std::string separator);
    std::string toString(format f) override;  // one value per line
    std::string getProcessDescription() override;
    void appendElement(double x);
    double getElement(unsigned index);
    // The values in their order, without a copy.
    const std::vector<double>& getValues() const { return values; }
    unsigned getSize();

    // Replay.
    void initRandomNumberGeneration(unsigned seed) override;
    double getNextRandomVariate() override;
    double computeLikelihood(Trace* trace) override;

    // Sample statistics.
    std::vector<double> getMoments(unsigned order) const;
    std::vector<double> getMoments(unsigned first, unsigned last) const override;
    double getVariance() const;
    Matrix getJointMoments(unsigned size) const;
    Matrix getJointMoments(unsigned first, unsigned last) const override;
    Matrix getJointMoments(unsigned firstRow, unsigned lastRow, unsigned firstCol, unsigned lastCol) const;
    std::vector<double> getAutocorrelations(unsigned first, unsigned last) const override;
    std::vector<double> getAutocovariances(unsigned first, unsigned last) const;
    Distribution computeDistribution(double lower, double upper, double width);
    Distribution computeDistribution(double lower, double upper) override;
    double evalCDF(double x) override;
    double evalCCDF(double x) override;
    double evalPDF(double x) override;
    double getSmallestValue() const;
    double getLargestValue() const;
    double getSmallestValueAbs() const;
    double getLargestValueAbs() const;
    std::string getSummary(unsigned moments, unsigned jointMoments, unsigned lags) override;
    std::string getSummary() override;

    // Target files for the fitters, each with an optional weights file.
    void saveMoments(std::string file, unsigned order, std::string weightsFile);
    void saveJointMoments(std::string file, unsigned order, std::string weightsFile);
    void saveAutocorrelations(std::string file, unsigned order, std::string weightsFile);

private:
    std::vector<double> values;
    unsigned position;
};

}  // namespace velmora

#endif
