#include "core/stage_timer.h"

#include <cstdio>

namespace velmora {

namespace {

double secondsSince(std::chrono::steady_clock::time_point from) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - from).count();
}

std::string seconds(double s) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.2f s", s);
    return buf;
}

}  // namespace

StageTimer::StageTimer() : start(Clock::now()), began(start) {}

void StageTimer::begin(const std::string& stage) {
    name = stage;
    began = Clock::now();
}

void StageTimer::end() { times.emplace_back(name, secondsSince(began)); }

std::string StageTimer::summary() const {
    std::string s;
    for (const auto& t : times) s += t.first + " " + seconds(t.second) + ", ";
    return s + "total " + seconds(secondsSince(start));
}

}  // namespace velmora
