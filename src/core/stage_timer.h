// Wall-clock time of the stages of a program's run, for its report: each
// stage from begin() to end(), and the whole run from construction.
#ifndef VELMORA_CORE_STAGE_TIMER_H
#define VELMORA_CORE_STAGE_TIMER_H

#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace velmora {

class StageTimer {
public:
    StageTimer();
    void begin(const std::string& name);
    void end();
    // The stage begun last ("" before the first).
    const std::string& current() const { return name; }
    // "read 0.01 s, marginal 1.20 s, total 1.23 s": the ended stages in
    // order, then the time since construction.
    std::string summary() const;

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point start;
    Clock::time_point began;
    std::string name;
    std::vector<std::pair<std::string, double>> times;
};

}  // namespace velmora

#endif
