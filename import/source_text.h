#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantlo {

class InputErrors;

/// How the bytes of a file spell its text.
enum class Encoding { utf8, gb18030 };

/// Where something stands in a file: both count from 1, the column in characters.
struct Place {
    std::size_t line = 1;
    std::size_t column = 1;

    friend bool operator==(const Place&, const Place&) = default;
};

/// The text of a file, in UTF-8 whatever the file's own encoding.
class SourceText {
public:
    SourceText(std::string file, std::string text) : file_(std::move(file)), text_(std::move(text)) {}

    [[nodiscard]] const std::string& file() const { return file_; }
    [[nodiscard]] std::string_view text() const { return text_; }

    /// The place of the byte at `offset`, which may be the end. Counts from the beginning of the file: for messages only.
    [[nodiscard]] Place place(std::size_t offset) const;

private:
    std::string file_;
    std::string text_;
};

/// A file's text, and the places of its invalid bytes.
struct DecodedFile {
    struct Fault {
        std::size_t offset;  ///< in `text`, where U+FFFD stands for the byte
        unsigned char byte;
    };

    std::string text;
    std::vector<Fault> faults;  ///< the first of each line
};

/// Reads a file. Shape: UTF-8 without a byte order mark, whether the file has one or not.
/// Returns  nothing if it cannot be read or is UTF-16, which is reported.
std::optional<DecodedFile> read_file(const std::string& path, Encoding encoding, InputErrors& errors);

}  // namespace vantlo
