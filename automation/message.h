#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <concepts>
#include <cstdint>
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

/// A number of things, for a place of a Message that says both forms of their name: one thing, several things.
/// Example  `{:bill|bills}` -> `0 bills`, `1 bill`, `2 bills`; `{}`, where a language has one form -> `2`
struct Count {
    template <std::integral Number>
    explicit constexpr Count(Number things) : number(static_cast<std::int64_t>(things)) {}

    std::int64_t number;
};

/// The text with its places filled.
template <typename... Values>
std::string say(Language language, const Message& wording, const Values&... values) {
    return fmt::format(fmt::runtime(wording.in(language)), values...);
}

}  // namespace vantlo

template <>
struct fmt::formatter<vantlo::Count> {
    constexpr auto parse(fmt::format_parse_context& context) {
        const auto end = std::find(context.begin(), context.end(), '}');
        const auto bar = std::find(context.begin(), end, '|');
        one_ = {context.begin(), bar};
        if (bar != end) several_ = {bar + 1, end};
        return end;
    }

    auto format(const vantlo::Count& count, fmt::format_context& context) const {
        const std::string_view name = count.number == 1 ? one_ : several_;
        return fmt::format_to(context.out(), "{}{}{}", count.number, name.empty() ? "" : " ", name);
    }

private:
    std::string_view one_;
    std::string_view several_;
};
