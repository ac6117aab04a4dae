#include "host/import/input_errors.h"

#include <fmt/format.h>

#include "host/bill_file.h"

namespace vantlo::host {

void InputErrors::add(const SourceText& source, std::size_t offset, const std::string& reason) {
    if (errors_.size() == kept) {
        ++count_;
        return;
    }
    const Place place = source.place(offset);
    add(fmt::format("{}:{}:{}: {}", source.file(), place.line, place.column, reason));
}

void InputErrors::add(std::string error) {
    ++count_;
    if (errors_.size() < kept) errors_.push_back(std::move(error));
}

std::string InputErrors::text() const {
    std::string text = fmt::format("{}", fmt::join(errors_, "\n"));
    if (count_ > errors_.size()) text += fmt::format("\n... and {} more errors", count_ - errors_.size());
    return text;
}

void InputErrors::raise() const {
    if (!empty()) throw BadInput(text());
}

}  // namespace vantlo::host
