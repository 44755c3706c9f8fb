// The generation loop that hands values on in blocks without keeping them,
// and the memory budget of the traces that simulate builds (trace_simulate.cpp).
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <fstream>
#include <limits>
#include <memory>
#include <string>

#include "core/libvelmora_settings.h"
#include "core/process.h"

namespace velmora {

namespace {

// A setting of the program, read by generations on any thread.
std::atomic<std::size_t> budgetOverride{0};

// The memory the system gives the program: the physical memory, or the limit
// of its control group (version 2 or 1) where that is smaller.
std::uint64_t availableMemory() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    std::uint64_t memory = (pages > 0 && pageSize > 0) ? static_cast<std::uint64_t>(pages) * pageSize
                                                        : (std::uint64_t(1) << 30);  // unknown: 1 GiB
    for (const char* limitFile : {"/sys/fs/cgroup/memory.max", "/sys/fs/cgroup/memory/memory.limit_in_bytes"}) {
        std::ifstream in(limitFile);
        std::uint64_t limit = 0;
        // "max" (no limit) does not read as a number.
        if (in >> limit && limit > 0 && limit < memory) memory = limit;
    }
    return memory;
}

}  // namespace

std::size_t simulation_memory_budget() {
    const std::size_t chosen = budgetOverride.load();
    if (chosen != 0) return chosen;
    static const std::size_t standard = static_cast<std::size_t>(availableMemory() / 8);
    return standard;
}

void set_simulation_memory_budget(std::size_t bytes) { budgetOverride.store(bytes); }

unsigned simulation_value_limit() {
    const std::size_t values = simulation_memory_budget() / sizeof(double);
    const std::size_t largest = std::numeric_limits<unsigned>::max();
    return static_cast<unsigned>(values < largest ? values : largest);
}

std::string simulation_budget_text() {
    const std::size_t budget = simulation_memory_budget();
    return std::to_string(budget / (1024 * 1024)) + " MiB (" + std::to_string(simulation_value_limit()) + " values)";
}

std::uint64_t Process::generate(int stop, std::uint64_t observations, double time, unsigned seed,
                                const ValueSink& sink) {
    const bool byCount = stop == 0 || stop == 1;
    const bool bySum = stop == 0 || stop == 2;
    initRandomNumberGeneration(seed);
    const std::size_t capacity = 4096;
    double block[capacity];
    std::size_t filled = 0;
    std::uint64_t count = 0;
    double sum = 0.0;
    // The same loop as simulate's, summing in the same order.
    while ((byCount && count < observations) || (bySum && time > sum)) {
        const double x = getNextRandomVariate();
        block[filled++] = x;
        ++count;
        sum += x;
        if (filled == capacity) {
            sink(block, filled);
            filled = 0;
        }
    }
    if (filled > 0) sink(block, filled);
    return count;
}

}  // namespace velmora
