#include "import/source_text.h"

#include <iconv.h>
#include <unistr.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <system_error>

#include "import/input_errors.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message file_unreadable = {"无法读取此文件", "the file cannot be read"};
constexpr Message file_is_utf16  = {"此文件是 UTF-16；请另存为 UTF-8", "the file is UTF-16; save it as UTF-8"};
constexpr Message no_conversion  = {"本系统不能转换 {}", "this system converts no {}"};
// clang-format on

}  // namespace words

namespace {

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
constexpr std::string_view replacement = "\xEF\xBF\xBD";

bool is_continuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

/// Replaces an invalid byte.
void replace_byte(DecodedFile& file, char byte) {
    const bool is_first_of_line =
        file.faults.empty() || file.text.find('\n', file.faults.back().offset) != std::string::npos;
    if (is_first_of_line) file.faults.push_back({file.text.size(), static_cast<unsigned char>(byte)});
    file.text += replacement;
}

DecodedFile decoded_utf8(std::string_view bytes) {
    DecodedFile file;
    while (!bytes.empty()) {
        const auto* const begin = reinterpret_cast<const std::uint8_t*>(bytes.data());
        const std::uint8_t* const bad = u8_check(begin, bytes.size());
        const std::size_t good = bad == nullptr ? bytes.size() : static_cast<std::size_t>(bad - begin);
        file.text.append(bytes.substr(0, good));
        if (bad != nullptr) replace_byte(file, bytes[good]);
        bytes.remove_prefix(std::min(bytes.size(), good + 1));
    }
    return file;
}

class Converter {
public:
    explicit Converter(const char* from) : handle_(::iconv_open("UTF-8", from)) {}
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter() {
        if (is_open()) ::iconv_close(handle_);
    }

    /// True if the C library knows the conversion; otherwise iconv_open returns this value.
    [[nodiscard]] bool is_open() const { return handle_ != reinterpret_cast<iconv_t>(-1); }  // NOLINT

    /// Moves the start of `bytes` to the text, up to an invalid byte. Returns false at such a byte.
    bool convert(std::string_view& bytes, std::string& text) {
        std::string buffer(1 << 16, '\0');
        while (!bytes.empty()) {
            char* in = const_cast<char*>(bytes.data());  // iconv's parameter is not const, but it does not write there
            std::size_t in_left = bytes.size();
            char* out = buffer.data();
            std::size_t out_left = buffer.size();
            const std::size_t result = ::iconv(handle_, &in, &in_left, &out, &out_left);
            const int problem = result == static_cast<std::size_t>(-1) ? errno : 0;
            text.append(buffer.data(), buffer.size() - out_left);
            bytes.remove_prefix(bytes.size() - in_left);
            if (problem == EILSEQ || problem == EINVAL) return false;
        }
        return true;
    }

private:
    iconv_t handle_;
};

/// Returns  nothing if this system does not know the encoding.
std::optional<DecodedFile> decoded_gb18030(std::string_view bytes) {
    DecodedFile file;
    Converter converter("GB18030");
    if (!converter.is_open()) return std::nullopt;
    while (!converter.convert(bytes, file.text)) {
        replace_byte(file, bytes.front());
        bytes.remove_prefix(1);
    }
    return file;
}

std::optional<std::string> file_bytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::error_code ignored;
    if (!file || std::filesystem::is_directory(path, ignored)) return std::nullopt;
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

}  // namespace

Place SourceText::place(std::size_t offset) const {
    const std::string_view before = text().substr(0, offset);
    const std::size_t line_start = before.rfind('\n') + 1;  // 0 on the first line
    const std::string_view line = before.substr(line_start);
    return {
        static_cast<std::size_t>(std::ranges::count(before, '\n')) + 1,
        static_cast<std::size_t>(std::ranges::count_if(line, [](char byte) { return !is_continuation(byte); })) + 1};
}

std::optional<DecodedFile> read_file(const std::string& path, Encoding encoding, InputErrors& errors) {
    const std::optional<std::string> bytes = file_bytes(path);
    if (!bytes) {
        errors.add(path, words::file_unreadable);
        return std::nullopt;
    }
    if (bytes->starts_with("\xFF\xFE") || bytes->starts_with("\xFE\xFF")) {
        errors.add(path + ":1:1", words::file_is_utf16);
        return std::nullopt;
    }
    std::optional<DecodedFile> file = encoding == Encoding::utf8 ? decoded_utf8(*bytes) : decoded_gb18030(*bytes);
    if (!file) {
        errors.add(path, words::no_conversion, "GB18030");
    } else if (file->text.starts_with(byte_order_mark)) {
        file->text.erase(0, byte_order_mark.size());
        for (DecodedFile::Fault& fault : file->faults) fault.offset -= byte_order_mark.size();
    }
    return file;
}

}  // namespace vantlo
