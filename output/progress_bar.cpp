#include "output/progress_bar.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include "output/table_output.h"
#include "output/visible.h"
#include "output/words.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message progress       = {"{} {:3}%  {}/{} 行  {} 行/秒  剩余 {}", "{} {:3}%  {} of {:line|lines}  {} a second  {} left"};
// clang-format on

}  // namespace words

namespace {

constexpr std::size_t usual_width = 80;
constexpr std::string_view start_of_empty_line = "\r\x1B[K";

/// Minutes and seconds, with hours once there are any: `0:05`, `1:02:03`.
std::string clock_text(double seconds) {
    const auto whole = static_cast<long>(seconds + 0.5);
    const long hours = whole / 3600, minutes = whole / 60 % 60, rest = whole % 60;
    return hours == 0 ? fmt::format("{}:{:02}", minutes, rest) : fmt::format("{}:{:02}:{:02}", hours, minutes, rest);
}

bool is_terminal() {
    const char* const terminal = std::getenv("TERM");
    return ::isatty(STDERR_FILENO) == 1 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

}  // namespace

std::string progress_line(std::size_t done, std::size_t total, std::chrono::duration<double> passed, std::size_t width,
                          Language language) {
    const double part = total == 0 ? 1 : static_cast<double>(done) / static_cast<double>(total);
    const double rate = passed.count() > 0 ? static_cast<double>(done) / passed.count() : 0;
    const std::string left = rate > 0 ? clock_text(static_cast<double>(total - done) / rate) : "-:--";
    const auto with_bar = [&](const std::string& bar) {
        return say(language, words::progress, bar, static_cast<int>(part * 100), done, Count(total),
                   static_cast<long>(rate), left);
    };
    const std::size_t words_width = cell_width(with_bar("[]"));
    if (words_width + 4 > width) return fmt::format("{:3}%", static_cast<int>(part * 100));
    const std::size_t cells = std::min<std::size_t>(40, width - words_width);
    const auto full = static_cast<std::size_t>(part * static_cast<double>(cells));
    return with_bar(fmt::format("[{0:#<{1}}{0:.<{2}}]", "", full, cells - full));
}

ProgressBar::ProgressBar(std::size_t total, Language language)
    : total_(total), language_(language), is_visible_(std::clog.rdbuf() != nullptr && is_terminal()) {
    show(0);
}

ProgressBar::~ProgressBar() {
    if (is_visible_) std::ostream(unfiltered(std::clog)) << start_of_empty_line << std::flush;
}

void ProgressBar::show(std::size_t done) {
    const Clock::time_point now = Clock::now();
    if (!is_visible_ || now - drawn_ < std::chrono::milliseconds(100)) return;
    drawn_ = now;
    // The last column stays free: some terminals go to the next line there.
    std::ostream(unfiltered(std::clog)) << start_of_empty_line
                                        << progress_line(done, total_, now - started_,
                                                         terminal_width(STDERR_FILENO).value_or(usual_width) - 1,
                                                         language_)
                                        << std::flush;
}

}  // namespace vantlo
