#include "import/input_errors.h"

#include <fmt/format.h>

#include "bills/task_error.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message more_errors    = {"……另有 {} 处错误", "... and {:more error|more errors}"};
// clang-format on

}  // namespace words

std::string InputErrors::where(const SourceText& source, std::size_t offset) { return source.where(offset) + ": "; }

std::string InputErrors::text() const {
    std::string text = fmt::format("{}", fmt::join(errors_, "\n"));
    if (count_ > errors_.size()) text += "\n" + say(language_, words::more_errors, Count(count_ - errors_.size()));
    if (!notes_.empty()) text += fmt::format("\n{}", fmt::join(notes_, "\n"));
    return text;
}

void InputErrors::raise() const {
    if (!empty()) throw TaskError(Reason::bad_input, text());
}

}  // namespace vantlo
