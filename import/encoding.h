#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantlo {

/// How the bytes of a file spell its text.
enum class Encoding { detect, utf8, utf16le, utf16be, gb18030, big5 };

/// A name by which users know an encoding. GBK and GB2312 are parts of GB18030 and read as it.
struct EncodingName {
    const char* name;  ///< as options spell it
    const char* shown;
    Encoding encoding;
};

/// The names of all encodings.
std::span<const EncodingName> encoding_names();

/// The first name of an encoding, which is not `detect`.
const EncodingName& name_of(Encoding encoding);

/// How well bytes read as one of the two-byte Chinese encodings.
struct Likeness {
    bool is_possible = false;    ///< no byte contradicts it
    std::size_t characters = 0;  ///< Chinese characters, punctuation left out
    std::size_t percent = 0;     ///< of them, those that are in daily use
};

/// What the bytes of a file say about their encoding.
struct EncodingGuess {
    Encoding encoding = Encoding::utf8;  ///< the likeliest; UTF-8 where nothing speaks for another one
    bool is_certain = true;              ///< false where a reader has to be told
    Likeness gb18030;                    ///< measured only if the bytes are no UTF-8 or UTF-16
    Likeness big5;

    /// Whether the bytes can be Chinese of two bytes a character, so that `best` and `other` say something.
    [[nodiscard]] bool is_chinese() const { return gb18030.is_possible || big5.is_possible; }
    [[nodiscard]] const Likeness& best() const { return encoding == Encoding::big5 ? big5 : gb18030; }
    [[nodiscard]] const Likeness& other() const { return encoding == Encoding::big5 ? gb18030 : big5; }
    [[nodiscard]] Encoding other_encoding() const {
        return encoding == Encoding::big5 ? Encoding::gb18030 : Encoding::big5;
    }
};

/// Looks at the mark, at NULs and at the characters. GB18030 and Big5 share most of their bytes: one of them is certain
/// only if at least 10 characters say so, 90 % of them are in daily use, and the other has 20 points less.
EncodingGuess guess_encoding(std::string_view bytes);

/// Text in UTF-8, and the places of what could not be converted.
struct DecodedText {
    struct Fault {
        enum class Kind { byte, half_pair };

        std::size_t offset;  ///< in `text`, where U+FFFD stands for it
        Kind kind;
        unsigned code;  ///< the byte or the code unit
    };

    std::string text;
    std::vector<Fault> faults;  ///< the first of each line
};

/// Converts bytes in the given encoding, which is not `detect`; a byte order mark is dropped.
/// Returns  nothing if this system does not know the encoding.
std::optional<DecodedText> decode(std::string_view bytes, Encoding encoding);

}  // namespace vantlo
