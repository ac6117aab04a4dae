#pragma once

#include <chrono>
#include <string>

#include "automation/error_text.h"

namespace vantlo {

/// The progress as one line of text, no wider than `width` cells.
/// Example  `[##########..........]  50%  50 of 100 lines  10 a second  0:05 left`
std::string progress_line(std::size_t done, std::size_t total, std::chrono::duration<double> passed, std::size_t width,
                          Language language);

/// Shows progress on stderr if that is a terminal and std::clog is not silenced, else nothing; its destructor removes it.
class ProgressBar {
public:
    ProgressBar(std::size_t total, Language language);
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;
    ~ProgressBar();

    /// Draws the bar anew, ten times a second at most.
    void show(std::size_t done);

private:
    using Clock = std::chrono::steady_clock;

    std::size_t total_;
    Language language_;
    bool is_visible_;
    Clock::time_point started_ = Clock::now();
    Clock::time_point drawn_{};
};

}  // namespace vantlo
