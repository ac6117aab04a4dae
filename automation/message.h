#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>

#include "automation/error_text.h"

namespace vantlo {

/// A text for people in both languages (UTF-8), with {fmt}'s places for what varies.
class Message {
public:
    /// Does not compile for texts with different numbers of places.
    consteval Message(const char* chinese, const char* english) : chinese_(chinese), english_(english) {
        if (places(chinese) != places(english)) throw std::logic_error("the two languages have different places");
    }

    [[nodiscard]] constexpr const char* in(Language language) const {
        return language == Language::chinese ? chinese_ : english_;
    }

private:
    static constexpr std::ptrdiff_t places(std::string_view text) { return std::ranges::count(text, '{'); }

    const char* chinese_;
    const char* english_;
};

/// The text with its places filled.
template <typename... Values>
std::string say(Language language, const Message& wording, const Values&... values) {
    return fmt::format(fmt::runtime(wording.in(language)), values...);
}

}  // namespace vantlo
