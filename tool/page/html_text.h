#pragma once

#include <string>
#include <string_view>

namespace vantlo {

/// A text (UTF-8) for a page: what HTML would take for its own is escaped, and what nobody would see is spelled out, as
/// visible does.
/// Example  `<b> & "c"` -> `&lt;b&gt; &amp; &quot;c&quot;`
std::string html_text(std::string_view text);

/// JSON for a script element of a type that no browser runs: its strings can neither end the element nor begin a comment.
/// Shape  JSON in, JSON out, of the same meaning.
std::string json_for_html(std::string json);

/// What a page's content policy calls a script or style: `'sha256-BASE64'`.
std::string content_hash(std::string_view content);

/// The template with each `{{name}}` replaced by what `value_of` says of the name; what replaces it is left as it is.
template <typename ValueOf>
std::string filled(std::string_view pattern, const ValueOf& value_of) {
    constexpr std::string_view opens = "{{", closes = "}}";
    std::string text;
    while (true) {
        const std::size_t open = pattern.find(opens);
        text += pattern.substr(0, open);
        if (open == std::string_view::npos) return text;
        pattern.remove_prefix(open + opens.size());
        const std::size_t close = pattern.find(closes);
        text += value_of(pattern.substr(0, close));
        pattern.remove_prefix(close + closes.size());
    }
}

}  // namespace vantlo
