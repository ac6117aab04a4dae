#include "import/json_reader.h"

#include <nlohmann/json.hpp>
#include <optional>

namespace vantlo {

namespace words {

// clang-format off
constexpr Message no_json        = {"这不是 JSON：{}", "this is no JSON: {}"};
constexpr Message nested_too_deeply = {"嵌套过深", "this is nested too deeply"};
constexpr Message field_twice    = {"字段“{}”出现了两次", "the field \"{}\" is given twice"};
// clang-format on

}  // namespace words

namespace {

using nlohmann::json;

/// The library's message for a fault, without the place that it names.
std::string reason_of(const std::string& what) {
    const std::size_t place = what.find("column");
    const std::string reason =
        what.substr(place == std::string::npos ? what.find("] ") + 2 : what.find(": ", place) + 2);
    return reason.substr(0, reason.find("; last read"));
}

/// Builds a tree of what the library reads. The library does not report the place of a value; since each of its events
/// stands for one token, the same tokens are counted in the text.
class TreeBuilder : public nlohmann::json_sax<json> {
public:
    /// `text` stands at `base` in the source. Elements of the lists of the document go to `take`, where it is given.
    TreeBuilder(const SourceText& source, std::string_view text, std::size_t base, InputErrors& errors,
                TakeElement take = {})
        : source_(source), text_(text), base_(base), errors_(errors), take_(std::move(take)) {}

    /// The document; nothing for invalid JSON, which is reported.
    std::optional<InputValue> document() {
        if (!json::sax_parse(text_, this)) return std::nullopt;
        return std::move(document_);
    }

    bool null() override { return add(value(InputValue::Kind::null)); }
    bool boolean(bool) override { return add(value(InputValue::Kind::boolean)); }
    bool number_integer(number_integer_t) override { return add(value(InputValue::Kind::number)); }
    bool number_unsigned(number_unsigned_t) override { return add(value(InputValue::Kind::number)); }
    bool number_float(number_float_t, const string_t&) override { return add(value(InputValue::Kind::number)); }
    bool binary(binary_t&) override { return false; }  // JSON text has none
    bool string(string_t& text) override {
        InputValue read = value(InputValue::Kind::text);
        read.text = std::move(text);
        return add(std::move(read));
    }
    bool start_object(std::size_t) override { return open(InputValue::Kind::object); }
    bool start_array(std::size_t) override { return open(InputValue::Kind::list); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }

    bool key(string_t& name) override {
        pass_separators();
        key_offset_ = base_ + at_;
        pass_token();
        if (open_.back().member(name) != nullptr) {
            errors_.add(source_, key_offset_, words::field_twice, name);
            return false;
        }
        key_ = std::move(name);
        return true;
    }

    bool parse_error(std::size_t read, const std::string&, const nlohmann::detail::exception& fault) override {
        pass_blanks();
        // If the library read past a separator, the separator was right: the fault follows it.
        if (at_ < text_.size() && is_separator(text_[at_]) && at_ + 1 < read) {
            ++at_;
            pass_blanks();
        }
        at_ = std::min(at_, read - 1);  // the library reads `01` as two numbers
        errors_.add(source_, base_ + at_, words::no_json, reason_of(fault.what()));
        return false;
    }

private:
    static constexpr std::size_t deepest = 8;
    static constexpr std::string_view blanks = " \t\r\n";

    static bool is_separator(char character) { return character == ',' || character == ':'; }

    void pass_blanks() { at_ = std::min(text_.find_first_not_of(blanks, at_), text_.size()); }
    void pass_separators() { at_ = text_.find_first_not_of(" \t\r\n,:", at_); }

    void pass_token() {
        if (text_[at_] == '"') {
            for (++at_; text_[at_] != '"'; ++at_) {
                if (text_[at_] == '\\') ++at_;
            }
            ++at_;
        } else if (std::string_view("{}[]").find(text_[at_]) != std::string_view::npos) {
            ++at_;
        } else {
            at_ = std::min(text_.find_first_of(" \t\r\n,]}", at_), text_.size());
        }
    }

    /// The value of the next token, named by the key before it if it is a member.
    InputValue value(InputValue::Kind kind) {
        pass_separators();
        const std::size_t start = at_;
        pass_token();
        InputValue read{kind, base_ + start, std::string(text_.substr(start, at_ - start)), {}, key_offset_, {}};
        read.name = std::exchange(key_, {});
        return read;
    }

    bool open(InputValue::Kind kind) {
        open_.push_back(value(kind));
        if (open_.size() <= deepest) return true;
        errors_.add(source_, open_.back().offset, words::nested_too_deeply);
        return false;
    }

    bool close() {
        pass_separators();
        pass_token();
        InputValue closed = std::move(open_.back());
        open_.pop_back();
        return add(std::move(closed));
    }

    bool add(InputValue read) {
        if (open_.empty()) {
            document_ = std::move(read);
        } else if (take_ && open_.size() == 2 && open_.back().kind == InputValue::Kind::list) {
            take_(open_.back(), read);
        } else {
            open_.back().children.push_back(std::move(read));
        }
        return true;
    }

    const SourceText& source_;
    std::string_view text_;
    std::size_t base_;
    InputErrors& errors_;
    TakeElement take_;
    std::size_t at_ = 0;
    std::string key_;
    std::size_t key_offset_ = 0;
    std::vector<InputValue> open_;
    InputValue document_;
};

}  // namespace

std::optional<InputValue> read_json(const SourceText& source, InputErrors& errors, const TakeElement& take) {
    return TreeBuilder(source, source.text(), 0, errors, take).document();
}

void read_json_lines(const SourceText& source, InputErrors& errors, const std::function<void(InputValue&)>& take) {
    const std::string_view text = source.text();
    for (std::size_t start = 0, end = 0; start < text.size(); start = end + 1) {
        end = std::min(text.find('\n', start), text.size());
        const std::string_view line = text.substr(start, end - start);
        if (line.find_first_not_of(" \t\r") == std::string_view::npos) continue;
        if (auto document = TreeBuilder(source, line, start, errors).document()) take(*document);
    }
}

}  // namespace vantlo
