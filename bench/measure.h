#pragma once

#include <time.h>

#include <algorithm>
#include <vector>

namespace vantlo::bench {

/// Elapsed time, or this process's processor time, which does not depend on other load.
enum class Clock { wall, own_processor_time };

/// How many seconds a call takes.
template <typename Body>
double seconds_of(Clock clock, const Body& body) {
    const auto now = [clock] {
        timespec time{};
        clock_gettime(clock == Clock::wall ? CLOCK_MONOTONIC : CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    const double start = now();
    body();
    return now() - start;
}

/// The value below which a part of the samples lies: 0.5 for the median.
inline double quantile(std::vector<double> samples, double part) {
    std::ranges::sort(samples);
    return samples.at(static_cast<std::size_t>(part * static_cast<double>(samples.size() - 1) + 0.5));
}

inline double median(const std::vector<double>& samples) { return quantile(samples, 0.5); }

}  // namespace vantlo::bench
