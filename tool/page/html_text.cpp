#include "tool/page/html_text.h"

#include <nettle/base64.h>
#include <nettle/sha2.h>

#include "output/visible.h"

namespace vantlo {

std::string html_text(std::string_view text) {
    std::string escaped;
    for (const char character : visible(text)) {
        switch (character) {
            case '&': escaped += "&amp;"; break;
            case '<': escaped += "&lt;"; break;
            case '>': escaped += "&gt;"; break;
            case '"': escaped += "&quot;"; break;
            default: escaped += character;
        }
    }
    return escaped;
}

std::string json_for_html(std::string json) {
    // Outside strings JSON has none of these.
    constexpr std::pair<std::string_view, std::string_view> escapes[] = {
        {"<", "\\u003c"}, {"\u2028", "\\u2028"}, {"\u2029", "\\u2029"}};
    for (const auto& [sign, escape] : escapes) {
        for (std::size_t at = 0; (at = json.find(sign, at)) != std::string::npos; at += escape.size())
            json.replace(at, sign.size(), escape);
    }
    return json;
}

std::string content_hash(std::string_view content) {
    sha256_ctx context;
    sha256_init(&context);
    sha256_update(&context, content.size(), reinterpret_cast<const std::uint8_t*>(content.data()));
    std::uint8_t digest[SHA256_DIGEST_SIZE];
    sha256_digest(&context, sizeof digest, digest);
    char encoded[BASE64_ENCODE_RAW_LENGTH(SHA256_DIGEST_SIZE)];
    base64_encode_raw(encoded, sizeof digest, digest);
    return "'sha256-" + std::string(encoded, sizeof encoded) + "'";
}

}  // namespace vantlo
