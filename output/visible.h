#pragma once

#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

namespace vantlo {

/// A text (UTF-8) with its control characters spelled out, so that it can do nothing to a terminal: those of C0 and C1, line
/// and paragraph separators, marks that turn the direction of what follows, and bytes that are no UTF-8.
/// Example  an escape character and `[2J` -> `\u001B[2J`; the byte 0x9B alone -> `\x9B`
std::string visible(std::string_view text);

/// The same, but line feeds and tabs stay.
std::string visible_lines(std::string_view text);

/// Makes stderr, and stdout if it is a terminal, write visible_lines of what they are given, as long as it lives.
///
/// std::cerr has errors, warnings and questions; std::clog, on stderr too, what only says how the work goes, and may be
/// silenced: std::clog.rdbuf(nullptr).
class VisibleStreams {
public:
    VisibleStreams();
    VisibleStreams(const VisibleStreams&) = delete;
    VisibleStreams& operator=(const VisibleStreams&) = delete;
    ~VisibleStreams();

private:
    class Filter;
    friend std::streambuf* unfiltered(std::ostream& stream);

    std::streambuf* stdout_buffer_;
    std::streambuf* stderr_buffer_;
    std::streambuf* log_buffer_;
};

/// The buffer of std::cout, std::cerr or std::clog without that filter: for the program's own colours and progress bars.
std::streambuf* unfiltered(std::ostream& stream);

}  // namespace vantlo
