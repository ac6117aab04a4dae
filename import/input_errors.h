#pragma once

#include <exception>
#include <string>
#include <vector>

#include "automation/message.h"
#include "import/source_text.h"

namespace vantlo {

/// All errors of the input: the first hundred as messages in one language, the others as a number.
class InputErrors {
public:
    static constexpr std::size_t kept = 100;

    explicit InputErrors(Language language) : language_(language) {}

    [[nodiscard]] Language language() const { return language_; }

    /// Adds an error at `offset`.
    template <typename... Values>
    void add(const SourceText& source, std::size_t offset, const Message& reason, const Values&... values) {
        ++count_;
        if (errors_.size() < kept) errors_.push_back(where(source, offset) + say(language_, reason, values...));
    }

    /// Adds an error without an offset; `place` is the file's name, or begins with it.
    template <typename... Values>
    void add(const std::string& place, const Message& reason, const Values&... values) {
        ++count_;
        if (errors_.size() < kept) errors_.push_back(place + ": " + say(language_, reason, values...));
    }

    /// Adds an error that is worded already, its place included.
    void add(const std::exception& worded) {
        ++count_;
        if (errors_.size() < kept) errors_.push_back(worded.what());
    }

    /// Adds what explains the errors of a file as a whole; it is said after them, and is none itself.
    template <typename... Values>
    void explain(const std::string& file, const Message& explanation, const Values&... values) {
        notes_.push_back(file + ": " + say(language_, explanation, values...));
    }

    /// Whether the next error will be kept as a message.
    [[nodiscard]] bool keeps_more() const { return errors_.size() < kept; }

    [[nodiscard]] bool empty() const { return count_ == 0; }

    /// Shape    a line each, `FILE:LINE:COLUMN: REASON`; then how many more there are, if there are; then explanations.
    [[nodiscard]] std::string text() const;

    /// Errors   TaskError with Reason::bad_input and the text, if anything is wrong.
    void raise() const;

private:
    static std::string where(const SourceText& source, std::size_t offset);

    Language language_;
    std::vector<std::string> errors_;
    std::vector<std::string> notes_;
    std::size_t count_ = 0;
};

}  // namespace vantlo
