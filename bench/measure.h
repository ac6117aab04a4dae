#pragma once

#include <algorithm>
#include <chrono>
#include <vector>

namespace vantlo::bench {

/// How long a call takes, by the wall clock.
template <typename Body>
double seconds_of(const Body& body) {
    const auto start = std::chrono::steady_clock::now();
    body();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The value below which a part of the samples lies: 0.5 for the median.
inline double quantile(std::vector<double> samples, double part) {
    std::ranges::sort(samples);
    return samples.at(static_cast<std::size_t>(part * static_cast<double>(samples.size() - 1) + 0.5));
}

inline double median(const std::vector<double>& samples) { return quantile(samples, 0.5); }

}  // namespace vantlo::bench
