#pragma once

#include <string>
#include <vector>

#include "host/import/source_text.h"

namespace vantlo::host {

/// What is wrong with the input, all of it: the first hundred in words, the rest counted.
class InputErrors {
public:
    static constexpr std::size_t kept = 100;

    /// `reason` is wrong with what stands at `offset`.
    void add(const SourceText& source, std::size_t offset, const std::string& reason);

    /// Something is wrong that stands nowhere in a text; `error` begins with the file's name.
    void add(std::string error);

    [[nodiscard]] bool empty() const { return count_ == 0; }

    /// Shape    a line each, `FILE:LINE:COLUMN: REASON`; then how many more there are, if there are.
    [[nodiscard]] std::string text() const;

    /// Errors   BadInput with the text, if anything is wrong.
    void raise() const;

private:
    std::vector<std::string> errors_;
    std::size_t count_ = 0;
};

}  // namespace vantlo::host
