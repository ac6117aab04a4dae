#include "import/encoding.h"

#include <iconv.h>
#include <unistr.h>

#include <algorithm>
#include <cerrno>

namespace vantlo {

namespace {

// clang-format off
//                               name        shown       encoding
constexpr EncodingName names[] = {
                                {"utf-8",    "UTF-8",    Encoding::utf8},
                                {"utf-16le", "UTF-16LE", Encoding::utf16le},
                                {"utf-16be", "UTF-16BE", Encoding::utf16be},
                                {"gb18030",  "GB18030",  Encoding::gb18030},
                                {"gbk",      "GBK",      Encoding::gb18030},
                                {"gb2312",   "GB2312",   Encoding::gb18030},
                                {"big5",     "Big5",     Encoding::big5},
};
// clang-format on

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
constexpr std::string_view replacement = "\xEF\xBF\xBD";

unsigned code_of(char byte) { return static_cast<unsigned char>(byte); }
bool is_in(char byte, unsigned first, unsigned last) { return code_of(byte) >= first && code_of(byte) <= last; }

bool is_utf8(std::string_view bytes) {
    return u8_check(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()) == nullptr;
}

/// UTF-16 without a mark, known by its NULs: headings, digits and separators have one each, always in the same half.
std::optional<Encoding> guess_utf16(std::string_view bytes) {
    std::size_t nuls[2] = {0, 0};  // in the first and in the second half of the code units
    for (std::size_t at = 0; at < bytes.size(); ++at) nuls[at % 2] += bytes[at] == '\0' ? 1U : 0U;
    const auto has_text_nuls = [&](std::size_t many, std::size_t few) {
        return many >= 4 && many * 10 >= bytes.size() / 2 && few * 20 <= many;
    };
    if (has_text_nuls(nuls[1], nuls[0])) return Encoding::utf16le;
    if (has_text_nuls(nuls[0], nuls[1])) return Encoding::utf16be;
    return std::nullopt;
}

/// How an encoding of two bytes a character is laid out.
struct Layout {
    struct Range {
        unsigned first;
        unsigned last;
    };

    Range trail_low;    ///< of second bytes
    Range trail_high;   ///< of second bytes
    Range daily_leads;  ///< first bytes of the characters in daily use, with a second byte from daily_trail on
    unsigned daily_trail;
    bool has_four_bytes;  ///< a second byte that is a digit begins a character of four bytes
};

constexpr Layout gb18030_layout = {{0x40, 0x7E}, {0x80, 0xFE}, {0xB0, 0xD7}, 0xA1, true};
constexpr Layout big5_layout = {{0x40, 0x7E}, {0xA1, 0xFE}, {0xA4, 0xC6}, 0x40, false};

Likeness likeness(std::string_view bytes, const Layout& layout) {
    Likeness found;
    std::size_t daily = 0;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        const char lead = bytes[at];
        if (is_in(lead, 0, 0x7F)) continue;
        if (!is_in(lead, 0x81, 0xFE) || ++at == bytes.size()) return {};
        const char trail = bytes[at];
        if (layout.has_four_bytes && is_in(trail, 0x30, 0x39)) {
            if (at + 2 >= bytes.size() || !is_in(bytes[at + 1], 0x81, 0xFE) || !is_in(bytes[at + 2], 0x30, 0x39)) {
                return {};
            }
            at += 2;
            ++found.characters;
            continue;
        }
        if (!is_in(trail, layout.trail_low.first, layout.trail_low.last) &&
            !is_in(trail, layout.trail_high.first, layout.trail_high.last)) {
            return {};
        }
        if (is_in(lead, 0xA1, 0xA3)) continue;  // punctuation, in both encodings
        ++found.characters;
        if (is_in(lead, layout.daily_leads.first, layout.daily_leads.last) && is_in(trail, layout.daily_trail, 0xFE)) {
            ++daily;
        }
    }
    found.is_possible = true;
    found.percent = found.characters == 0 ? 0 : daily * 100 / found.characters;
    return found;
}

/// Collects text and, of each line, the first fault.
class Collector {
public:
    void add(std::string_view good) {
        if (good.find('\n') != std::string_view::npos) is_faulty_line_ = false;
        decoded_.text += good;
    }

    void replace(DecodedText::Fault::Kind kind, unsigned code) {
        if (!is_faulty_line_) decoded_.faults.push_back({decoded_.text.size(), kind, code});
        is_faulty_line_ = true;
        decoded_.text += replacement;
    }

    DecodedText finish() {
        if (decoded_.text.starts_with(byte_order_mark)) {
            decoded_.text.erase(0, byte_order_mark.size());
            for (DecodedText::Fault& fault : decoded_.faults) fault.offset -= byte_order_mark.size();
        }
        return std::move(decoded_);
    }

private:
    DecodedText decoded_;
    bool is_faulty_line_ = false;
};

DecodedText decode_utf8(std::string_view bytes) {
    Collector collector;
    while (!bytes.empty()) {
        const auto* const begin = reinterpret_cast<const std::uint8_t*>(bytes.data());
        const std::uint8_t* const bad = u8_check(begin, bytes.size());
        const std::size_t good = bad == nullptr ? bytes.size() : static_cast<std::size_t>(bad - begin);
        collector.add(bytes.substr(0, good));
        if (bad != nullptr) collector.replace(DecodedText::Fault::Kind::byte, code_of(bytes[good]));
        bytes.remove_prefix(std::min(bytes.size(), good + 1));
    }
    return collector.finish();
}

class Converter {
public:
    explicit Converter(const char* from) : handle_(::iconv_open("UTF-8", from)), buffer_(1 << 16, '\0') {}
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter() {
        if (is_open()) ::iconv_close(handle_);
    }

    /// True if the C library knows the conversion; otherwise iconv_open returns this value.
    [[nodiscard]] bool is_open() const { return handle_ != reinterpret_cast<iconv_t>(-1); }  // NOLINT

    /// Moves the start of `bytes` to the collector, up to what is invalid. Returns false there.
    bool convert(std::string_view& bytes, Collector& collector) {
        while (!bytes.empty()) {
            char* in = const_cast<char*>(bytes.data());  // iconv's parameter is not const, but it does not write there
            std::size_t in_left = bytes.size();
            char* out = buffer_.data();
            std::size_t out_left = buffer_.size();
            const std::size_t result = ::iconv(handle_, &in, &in_left, &out, &out_left);
            const int problem = result == static_cast<std::size_t>(-1) ? errno : 0;
            collector.add(std::string_view(buffer_.data(), buffer_.size() - out_left));
            bytes.remove_prefix(bytes.size() - in_left);
            if (problem == EILSEQ || problem == EINVAL) return false;
        }
        return true;
    }

private:
    iconv_t handle_;
    std::string buffer_;
};

std::optional<DecodedText> decode_by_library(std::string_view bytes, const char* library_name) {
    Collector collector;
    Converter converter(library_name);
    if (!converter.is_open()) return std::nullopt;
    while (!converter.convert(bytes, collector)) {
        collector.replace(DecodedText::Fault::Kind::byte, code_of(bytes.front()));
        bytes.remove_prefix(1);
    }
    return collector.finish();
}

std::optional<DecodedText> decode_utf16(std::string_view bytes, bool is_big_endian) {
    Collector collector;
    Converter converter(is_big_endian ? "UTF-16BE" : "UTF-16LE");
    if (!converter.is_open()) return std::nullopt;
    while (!converter.convert(bytes, collector)) {
        if (bytes.size() == 1) {  // the file ends within a code unit
            collector.replace(DecodedText::Fault::Kind::byte, code_of(bytes[0]));
        } else {
            const unsigned high = code_of(bytes[is_big_endian ? 0 : 1]), low = code_of(bytes[is_big_endian ? 1 : 0]);
            collector.replace(DecodedText::Fault::Kind::half_pair, high << 8 | low);
        }
        bytes.remove_prefix(std::min<std::size_t>(bytes.size(), 2));
    }
    return collector.finish();
}

}  // namespace

std::span<const EncodingName> encoding_names() { return names; }

const EncodingName& name_of(Encoding encoding) { return *std::ranges::find(names, encoding, &EncodingName::encoding); }

EncodingGuess guess_encoding(std::string_view bytes) {
    EncodingGuess guess;
    if (bytes.starts_with("\xFF\xFE")) {
        guess.encoding = Encoding::utf16le;
    } else if (bytes.starts_with("\xFE\xFF")) {
        guess.encoding = Encoding::utf16be;
    } else if (bytes.starts_with(byte_order_mark)) {
        guess.encoding = Encoding::utf8;
    } else if (const auto utf16 = guess_utf16(bytes)) {
        guess.encoding = *utf16;
    } else if (!is_utf8(bytes)) {
        constexpr std::size_t enough = 10, most = 90, apart = 20;
        guess.gb18030 = likeness(bytes, gb18030_layout);
        guess.big5 = likeness(bytes, big5_layout);
        if (guess.is_chinese()) {
            guess.encoding = guess.big5.percent > guess.gb18030.percent ? Encoding::big5 : Encoding::gb18030;
        }
        guess.is_certain = guess.best().characters >= enough && guess.best().percent >= most &&
                           guess.other().percent + apart <= guess.best().percent;
    }
    return guess;
}

std::optional<DecodedText> decode(std::string_view bytes, Encoding encoding) {
    switch (encoding) {
        case Encoding::utf16le: return decode_utf16(bytes, false);
        case Encoding::utf16be: return decode_utf16(bytes, true);
        case Encoding::gb18030: return decode_by_library(bytes, "GB18030");
        case Encoding::big5: return decode_by_library(bytes, "BIG5");
        case Encoding::detect:
        case Encoding::utf8: break;
    }
    return decode_utf8(bytes);
}

}  // namespace vantlo
