#include "output/visible.h"

#include <fmt/format.h>
#include <unistd.h>
#include <unistr.h>

#include <iostream>
#include <memory>
#include <utility>

namespace vantlo {

namespace {

bool is_control(ucs4_t character) {
    return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x2028 || character == 0x2029 ||
           character == 0x200E || character == 0x200F || (character >= 0x202A && character <= 0x202E) ||
           (character >= 0x2066 && character <= 0x2069);
}

std::string spelled_out(std::string_view text, std::string_view kept) {
    std::string shown;
    while (!text.empty()) {
        ucs4_t character = 0;
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
        const int length = u8_mbtoucr(&character, bytes, text.size());
        const auto taken = static_cast<std::size_t>(length > 0 ? length : 1);
        if (length <= 0) {
            shown += fmt::format("\\x{:02X}", *bytes);
        } else if (is_control(character) && kept.find(text.front()) == std::string_view::npos) {
            shown += fmt::format("\\u{:04X}", character);
        } else {
            shown += text.substr(0, taken);
        }
        text.remove_prefix(taken);
    }
    return shown;
}

}  // namespace

std::string visible(std::string_view text) { return spelled_out(text, {}); }

std::string visible_lines(std::string_view text) { return spelled_out(text, "\n\t"); }

/// Collects what is written until a line ends or the stream is flushed, so that no character is cut.
class VisibleStreams::Filter final : public std::streambuf {
public:
    explicit Filter(std::streambuf* target) : target_(target) {}

    [[nodiscard]] std::streambuf* target() const { return target_; }

protected:
    int_type overflow(int_type character) override {
        if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(character);
        text_ += traits_type::to_char_type(character);
        return text_.back() != '\n' || write() ? character : traits_type::eof();
    }
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        text_.append(text, static_cast<std::size_t>(size));
        return text_.find('\n') == std::string::npos || write() ? size : 0;
    }
    int sync() override { return write() ? target_->pubsync() : -1; }

private:
    bool write() {
        const std::string shown = visible_lines(std::exchange(text_, {}));
        const auto size = static_cast<std::streamsize>(shown.size());
        return target_->sputn(shown.data(), size) == size;
    }

    std::streambuf* target_;
    std::string text_;
};

VisibleStreams::VisibleStreams()
    : stdout_buffer_(std::cout.rdbuf()), stderr_buffer_(std::cerr.rdbuf()), log_buffer_(std::clog.rdbuf()) {
    std::cerr.rdbuf(new Filter(stderr_buffer_));
    std::clog.rdbuf(std::cerr.rdbuf());
    if (::isatty(STDOUT_FILENO) == 1) std::cout.rdbuf(new Filter(stdout_buffer_));
}

VisibleStreams::~VisibleStreams() {
    const auto restore = [](std::ostream& stream, std::streambuf* buffer) {
        if (stream.rdbuf() == buffer) return;
        stream.flush();
        const std::unique_ptr<std::streambuf> filter(stream.rdbuf(buffer));
    };
    std::clog.rdbuf(log_buffer_);
    restore(std::cout, stdout_buffer_);
    restore(std::cerr, stderr_buffer_);
}

std::streambuf* unfiltered(std::ostream& stream) {
    const auto* const filter = dynamic_cast<VisibleStreams::Filter*>(stream.rdbuf());
    stream.flush();
    return filter == nullptr ? stream.rdbuf() : filter->target();
}

}  // namespace vantlo
