#include "import/workbook.h"

#include <expat.h>
#include <fmt/format.h>
#include <zip.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <deque>
#include <exception>
#include <map>
#include <optional>
#include <set>

#include "automation/calendar.h"
#include "bills/task_error.h"
#include "import/cell_values.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message old_workbook   = {"这是旧格式（.xls）或加了密码的工作簿；请去掉密码并另存为 .xlsx", "this is a workbook of the older kind (.xls) or one with a password; save it as .xlsx without a password"};
constexpr Message encrypted_workbook = {"此工作簿加了密码；请去掉密码后再保存", "the workbook has a password; save it without one"};
constexpr Message open_document  = {"这是 OpenDocument 表格（.ods）；请另存为 .xlsx 或 .csv", "this is an OpenDocument sheet (.ods); save it as .xlsx or .csv"};
constexpr Message binary_workbook = {"这是二进制工作簿（.xlsb）；请另存为 .xlsx", "this is a binary workbook (.xlsb); save it as .xlsx"};
constexpr Message no_workbook    = {"这不是 .xlsx 工作簿：其中没有 {}", "this is no .xlsx workbook: it has no {}"};
constexpr Message no_archive     = {"这不是 .xlsx 工作簿，或已损坏：{}", "this is no .xlsx workbook, or a damaged one: {}"};
constexpr Message damaged_part   = {"工作簿已损坏：{}：{}", "the workbook is damaged: {}: {}"};
constexpr Message has_doctype    = {"{} 中有文档类型声明，工作簿不会有；已拒绝读取", "{} has a document type declaration, which no workbook has; it is not read"};
constexpr Message too_much_inside = {"工作簿解压后过大（文件 {} 字节，解压已超过 {} 字节）；已拒绝读取", "the workbook is too big unpacked (a file of {} bytes, more than {} bytes inside); it is not read"};
constexpr Message too_deep       = {"嵌套过深", "it is nested too deeply"};
constexpr Message too_long       = {"其中有过长的标签", "it has a tag of more than a million characters"};
constexpr Message too_many       = {"其中的 {} 过多", "it has too many of {}"};
constexpr Message bad_cell_name  = {"“{}”不是单元格", "\"{}\" is no cell"};
constexpr Message out_of_order   = {"{} 不在其应在的位置", "{} is out of order"};
constexpr Message bad_reference  = {"没有编号为 {} 的共享文字", "there is no shared text {}"};
constexpr Message bad_number     = {"“{}”不是数字", "\"{}\" is no number"};
constexpr Message too_many_columns = {"表格过宽：最多读取 {} 列", "the table is too wide: no more than {} columns are read"};
constexpr Message no_cached_value = {"公式没有保存结果；请用电子表格打开并保存一次", "a formula without its result; open the workbook in a spreadsheet and save it"};
// clang-format on

}  // namespace words

namespace {

constexpr std::size_t rows_of_a_sheet = 1'048'576;
/// No table has so many columns; each row of a hostile sheet would be as wide.
constexpr std::size_t columns_read = 1000;
/// What an archive may hold: this much, and so many times its own size more. Sheets shrink 10 to 50 times.
constexpr std::uint64_t unpacked_always = std::uint64_t{32} << 20, unpacked_ratio = 100,
                        unpacked_most = std::uint64_t{2} << 30;
constexpr std::size_t chunk_size = 16'384;
constexpr std::size_t deepest = 64;
/// A parser starts a tag or a comment that has not ended over with each piece.
constexpr std::size_t longest_token = std::size_t{1} << 20;
constexpr std::size_t most_shared_texts = 16'000'000, most_merged_areas = 1'000'000;

/// Says what is wrong with a workbook.
class Refusals {
public:
    Refusals(std::string file, Language language) : file_(std::move(file)), language_(language) {}

    template <typename... Values>
    [[nodiscard]] TaskError refusal(const Message& wording, const Values&... values) const {
        return {Reason::bad_input, file_ + ": " + say(language_, wording, values...)};
    }

    template <typename... Values>
    [[nodiscard]] TaskError damaged(const std::string& part, const Message& wording, const Values&... values) const {
        return refusal(words::damaged_part, part, say(language_, wording, values...));
    }

    [[nodiscard]] TaskError damaged(const std::string& part, const std::string& reason) const {
        return refusal(words::damaged_part, part, reason);
    }

private:
    std::string file_;
    Language language_;
};

/// The archive that a workbook is.
class Archive {
public:
    Archive(std::string_view bytes, const Refusals& refusals) : size_(bytes.size()), refusals_(refusals) {
        zip_error_t error;
        zip_error_init(&error);
        zip_source_t* const source = zip_source_buffer_create(bytes.data(), bytes.size(), 0, &error);
        if (source != nullptr) zip_ = zip_open_from_source(source, ZIP_RDONLY, &error);
        const std::string reason = zip_error_strerror(&error);
        zip_error_fini(&error);
        if (zip_ != nullptr) return;
        if (source != nullptr) zip_source_free(source);
        throw refusals_.refusal(words::no_archive, reason);
    }
    Archive(const Archive&) = delete;
    Archive& operator=(const Archive&) = delete;
    ~Archive() { zip_discard(zip_); }

    [[nodiscard]] bool has(const std::string& part) const {
        return zip_name_locate(zip_, part.c_str(), ZIP_FL_NOCASE) >= 0;
    }

    /// Counts what is unpacked; refuses what no workbook would hold.
    void count_unpacked(std::uint64_t bytes) {
        unpacked_ += bytes;
        const std::uint64_t most = std::min(unpacked_most, unpacked_always + unpacked_ratio * size_);
        if (unpacked_ > most) throw refusals_.refusal(words::too_much_inside, size_, most);
    }

    [[nodiscard]] zip_t* handle() const { return zip_; }
    [[nodiscard]] const Refusals& refusals() const { return refusals_; }

private:
    zip_t* zip_ = nullptr;
    std::uint64_t size_;
    std::uint64_t unpacked_ = 0;
    const Refusals& refusals_;
};

/// A part of the archive, unpacked piece by piece.
class PartStream {
public:
    PartStream(Archive& archive, std::string part) : archive_(archive), part_(std::move(part)) {
        const zip_int64_t index = zip_name_locate(archive.handle(), part_.c_str(), ZIP_FL_NOCASE);
        if (index < 0) throw archive.refusals().refusal(words::no_workbook, part_);
        file_ = zip_fopen_index(archive.handle(), static_cast<zip_uint64_t>(index), 0);
        if (file_ != nullptr) return;
        const int code = zip_error_code_zip(zip_get_error(archive.handle()));
        if (code == ZIP_ER_NOPASSWD || code == ZIP_ER_WRONGPASSWD)
            throw archive.refusals().refusal(words::encrypted_workbook);
        throw archive.refusals().damaged(part_, std::string(zip_strerror(archive.handle())));
    }
    PartStream(const PartStream&) = delete;
    PartStream& operator=(const PartStream&) = delete;
    ~PartStream() { zip_fclose(file_); }

    /// The next piece; empty at the end.
    std::string_view next() {
        const zip_int64_t read = zip_fread(file_, buffer_.data(), buffer_.size());
        if (read < 0) throw archive_.refusals().damaged(part_, std::string(zip_file_strerror(file_)));
        archive_.count_unpacked(static_cast<std::uint64_t>(read));
        return {buffer_.data(), static_cast<std::size_t>(read)};
    }

    [[nodiscard]] const std::string& part() const { return part_; }

private:
    Archive& archive_;
    std::string part_;
    zip_file_t* file_ = nullptr;
    std::string buffer_ = std::string(chunk_size, '\0');
};

/// An element without the prefix of its namespace: programs choose prefixes as they like.
std::string_view local_name(const char* name) {
    const std::string_view whole(name);
    return whole.substr(whole.rfind(':') + 1);
}

/// The attributes of an element.
class Attributes {
public:
    explicit Attributes(const char** list) : list_(list) {}

    /// Empty if there is none. A prefix is part of the wanted name only where it is given.
    [[nodiscard]] std::string_view of(std::string_view wanted) const {
        for (const char** each = list_; *each != nullptr; each += 2) {
            if (*each == wanted) return each[1];
        }
        return {};
    }

    /// The identifier of a relation, whose prefix programs choose.
    [[nodiscard]] std::string_view relation() const {
        for (const char** each = list_; *each != nullptr; each += 2) {
            if (std::string_view(*each).find(':') != std::string_view::npos && local_name(*each) == "id")
                return each[1];
        }
        return {};
    }

private:
    const char** list_;
};

/// What a part's reader does with its elements.
struct ElementHandlers {
    std::function<void(std::string_view element, const Attributes& attributes)> start;
    std::function<void(std::string_view element)> end = [](std::string_view) {};
    std::function<void(std::string_view text)> text = [](std::string_view) {};
};

/// Parses a part as it is unpacked.
class PartParser {
public:
    PartParser(Archive& archive, const std::string& part, ElementHandlers handlers)
        : stream_(archive, part),
          refusals_(archive.refusals()),
          handlers_(std::move(handlers)),
          parser_(XML_ParserCreate(nullptr)) {
        if (parser_ == nullptr) throw std::bad_alloc();
        XML_SetUserData(parser_, this);
        XML_SetElementHandler(parser_, on_start, on_end);
        XML_SetCharacterDataHandler(parser_, on_text);
        XML_SetStartDoctypeDeclHandler(parser_, on_doctype);
    }
    PartParser(const PartParser&) = delete;
    PartParser& operator=(const PartParser&) = delete;
    ~PartParser() { XML_ParserFree(parser_); }

    /// Goes on by a piece; returns false once the part has ended.
    bool go_on() {
        if (has_ended_) return false;
        const std::string_view piece = stream_.next();
        has_ended_ = piece.empty();
        read_ += piece.size();
        const XML_Status status = XML_Parse(parser_, piece.data(), static_cast<int>(piece.size()), has_ended_ ? 1 : 0);
        if (fault_) std::rethrow_exception(fault_);
        if (status == XML_STATUS_ERROR) {
            throw refusals_.damaged(stream_.part(), std::string(XML_ErrorString(XML_GetErrorCode(parser_))));
        }
        if (read_ >
            longest_token + static_cast<std::size_t>(std::max<XML_Index>(XML_GetCurrentByteIndex(parser_), 0))) {
            throw refusals_.damaged(stream_.part(), words::too_long);
        }
        return true;
    }

    void read_all() {
        while (go_on()) {
        }
    }

private:
    /// Runs a handler; what it throws does not pass through the parser, which is C.
    template <typename Work>
    void guard(const Work& work) {
        if (fault_) return;
        try {
            work();
        } catch (...) {
            fault_ = std::current_exception();
            XML_StopParser(parser_, XML_FALSE);
        }
    }

    static PartParser& self(void* data) { return *static_cast<PartParser*>(data); }

    static void XMLCALL on_start(void* data, const char* name, const char** attributes) {
        PartParser& parser = self(data);
        parser.guard([&] {
            if (++parser.depth_ > deepest) throw parser.refusals_.damaged(parser.stream_.part(), words::too_deep);
            parser.handlers_.start(local_name(name), Attributes(attributes));
        });
    }
    static void XMLCALL on_end(void* data, const char* name) {
        PartParser& parser = self(data);
        parser.guard([&] {
            --parser.depth_;
            parser.handlers_.end(local_name(name));
        });
    }
    static void XMLCALL on_text(void* data, const char* text, int length) {
        PartParser& parser = self(data);
        parser.guard([&] { parser.handlers_.text({text, static_cast<std::size_t>(length)}); });
    }
    static void XMLCALL on_doctype(void* data, const char*, const char*, const char*, int) {
        PartParser& parser = self(data);
        parser.guard([&] { throw parser.refusals_.refusal(words::has_doctype, parser.stream_.part()); });
    }

    PartStream stream_;
    const Refusals& refusals_;
    ElementHandlers handlers_;
    XML_Parser parser_;
    std::exception_ptr fault_;
    std::size_t depth_ = 0;
    std::size_t read_ = 0;  ///< bytes
    bool has_ended_ = false;
};

template <typename Number>
std::optional<Number> number_from(std::string_view text) {
    Number number{};
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (problem != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

bool is_true(std::string_view value) { return value == "1" || value == "true"; }

/// A part that another one names, from the folder of that one or, after a slash, from the top.
std::string part_beside(const std::string& folder, std::string_view target) {
    return target.starts_with('/') ? std::string(target.substr(1)) : folder + std::string(target);
}

struct CellPosition {
    std::size_t row;
    std::size_t column;
};

/// Example  `C7` -> row 6, column 2
std::optional<CellPosition> position_of(std::string_view name) {
    std::size_t column = 0, at = 0;
    for (; at < name.size() && at < 4 && (name[at] & ~0x20) >= 'A' && (name[at] & ~0x20) <= 'Z'; ++at) {
        column = column * 26 + static_cast<std::size_t>((name[at] & ~0x20) - 'A') + 1;
    }
    const auto row = number_from<std::size_t>(name.substr(at));
    if (column == 0 || column > SourceText::widest_sheet || !row || *row == 0 || *row > rows_of_a_sheet)
        return std::nullopt;
    return CellPosition{*row - 1, column - 1};
}

/// A text of a cell, in which `_x000A_` stands for a character that XML does not carry.
std::string unescaped(std::string_view text) {
    std::string plain;
    for (std::size_t at = 0; at < text.size();) {
        unsigned code = 0;
        const std::string_view digits = text.substr(at, 7).size() == 7 ? text.substr(at + 2, 4) : "";
        const bool is_escape = text.substr(at, 2) == "_x" && digits.size() == 4 && text[at + 6] == '_' &&
                               std::from_chars(digits.data(), digits.data() + 4, code, 16).ptr == digits.data() + 4;
        if (is_escape && (code < 0xD800 || code > 0xDFFF)) {
            plain += to_utf8(Text(1, static_cast<char16_t>(code)));
            at += 7;
        } else {
            plain += text[at++];
        }
    }
    return plain;
}

/// A number as a spreadsheet shows it at most: with 15 digits.
std::string number_shown(double value) { return fmt::format("{:.15g}", value == 0 ? 0.0 : value); }

struct Area {
    CellPosition first;
    CellPosition last;
};

}  // namespace

struct Workbook::Contents {
    Contents(std::string file, std::string_view bytes, Language language)
        : refusals(std::move(file), language), archive((refuse_other_formats(bytes), bytes), refusals) {
        if (archive.has("mimetype") && !archive.has("[Content_Types].xml"))
            throw refusals.refusal(words::open_document);
        if (archive.has("xl/workbook.bin")) throw refusals.refusal(words::binary_workbook);
        read_workbook();
        if (const std::string part = part_of("/styles"); !part.empty()) read_styles(part);
        if (const std::string part = part_of("/sharedStrings"); !part.empty()) read_shared_texts(part);
    }

    void refuse_other_formats(std::string_view bytes) const {
        // The older container: either a workbook of the older kind, or the encryption of a new one.
        if (!bytes.starts_with("\xD0\xCF\x11\xE0")) return;
        std::string name;
        for (const char letter : std::string_view("EncryptedPackage")) name += {letter, '\0'};
        throw refusals.refusal(bytes.find(name) == std::string_view::npos ? words::old_workbook
                                                                          : words::encrypted_workbook);
    }

    /// The part of the first relation whose type ends so; empty if there is none.
    [[nodiscard]] std::string part_of(std::string_view type) const {
        const auto found =
            std::ranges::find_if(relations, [&](const auto& each) { return each.second.type.ends_with(type); });
        return found == relations.end() ? "" : found->second.part;
    }

    struct Relation {
        std::string type;
        std::string part;
    };

    std::map<std::string, Relation> relations_of(const std::string& part, const std::string& folder) {
        std::map<std::string, Relation> found;
        PartParser(archive, part, {[&](std::string_view element, const Attributes& attributes) {
                       if (element != "Relationship") return;
                       found[std::string(attributes.of("Id"))] = {std::string(attributes.of("Type")),
                                                                  part_beside(folder, attributes.of("Target"))};
                   }})
            .read_all();
        return found;
    }

    void read_workbook() {
        std::string part = "xl/workbook.xml";
        if (archive.has("_rels/.rels")) {
            for (const auto& [id, relation] : relations_of("_rels/.rels", "")) {
                if (relation.type.ends_with("/officeDocument")) part = relation.part;
            }
        }
        const std::size_t slash = part.rfind('/') + 1;  // 0 at the top
        const std::string folder = part.substr(0, slash);
        relations = relations_of(folder + "_rels/" + part.substr(slash) + ".rels", folder);
        PartParser(archive, part, {[&](std::string_view element, const Attributes& attributes) {
                       if (element == "workbookPr") counts_from_1904 = is_true(attributes.of("date1904"));
                       if (element != "sheet") return;
                       const auto relation = relations.find(std::string(attributes.relation()));
                       if (relation == relations.end() || !relation->second.type.ends_with("/worksheet")) return;
                       const std::string_view state = attributes.of("state");
                       sheets.push_back({std::string(attributes.of("name")), state == "hidden" || state == "veryHidden",
                                         relation->second.part});
                   }})
            .read_all();
        if (sheets.empty()) throw refusals.refusal(words::no_workbook, "worksheet");
    }

    void read_styles(const std::string& part) {
        std::set<std::string, std::less<>> date_formats;
        for (const auto& [first, last] : {std::pair{14, 22}, {27, 36}, {45, 47}, {50, 58}}) {
            for (int id = first; id <= last; ++id) date_formats.insert(std::to_string(id));
        }
        bool is_in_cells = false;
        PartParser(archive, part,
                   {[&](std::string_view element, const Attributes& attributes) {
                        if (element == "numFmt") {
                            const std::string id(attributes.of("numFmtId"));
                            if (is_date_format(attributes.of("formatCode"))) {
                                date_formats.insert(id);
                            } else {
                                date_formats.erase(id);
                            }
                        }
                        if (element == "cellXfs") is_in_cells = true;
                        if (element == "xf" && is_in_cells)
                            is_date_style.push_back(date_formats.contains(attributes.of("numFmtId")));
                    },
                    [&](std::string_view element) {
                        if (element == "cellXfs") is_in_cells = false;
                    }})
            .read_all();
    }

    void read_shared_texts(const std::string& part) {
        bool is_text = false;
        int phonetic = 0;
        PartParser(archive, part,
                   {[&](std::string_view element, const Attributes&) {
                        if (element == "si") shared_texts.emplace_back();
                        if (shared_texts.size() > most_shared_texts)
                            throw refusals.damaged(part, words::too_many, element);
                        if (element == "rPh") ++phonetic;
                        is_text = element == "t" && phonetic == 0 && !shared_texts.empty();
                    },
                    [&](std::string_view element) {
                        is_text = false;
                        if (element == "rPh") --phonetic;
                        if (element == "si" && !shared_texts.empty())
                            shared_texts.back() = unescaped(shared_texts.back());
                    },
                    [&](std::string_view text) {
                        if (is_text) shared_texts.back() += text;
                    }})
            .read_all();
    }

    Refusals refusals;
    Archive archive;
    std::map<std::string, Relation> relations;
    std::vector<Sheet> sheets;
    bool counts_from_1904 = false;
    std::vector<bool> is_date_style;
    std::vector<std::string> shared_texts;
};

namespace {

/// The merged cells of a sheet, which stand behind all of its rows.
std::vector<Area> merged_areas(Archive& archive, const std::string& part) {
    std::vector<Area> areas;
    PartParser(archive, part, {[&](std::string_view element, const Attributes& attributes) {
                   if (element != "mergeCell") return;
                   const std::string_view range = attributes.of("ref");
                   const std::size_t colon = std::min(range.find(':'), range.size());
                   const auto first = position_of(range.substr(0, colon));
                   const auto last = position_of(range.substr(std::min(colon + 1, range.size())));
                   if (!first || (colon != range.size() && !last)) {
                       throw archive.refusals().damaged(part, words::bad_cell_name, range);
                   }
                   if (last && first->column < columns_read) areas.push_back({*first, *last});
                   if (areas.size() > most_merged_areas)
                       throw archive.refusals().damaged(part, words::too_many, element);
               }})
        .read_all();
    std::ranges::sort(areas, {}, [](const Area& area) { return area.first.row; });
    return areas;
}

/// Reads the rows of a sheet.
class SheetRows {
public:
    SheetRows(Workbook::Contents& contents, const Workbook::Sheet& sheet, const SourceText& source, InputErrors& errors)
        : contents_(contents),
          part_(sheet.part),
          source_(source),
          errors_(errors),
          areas_(merged_areas(contents.archive, sheet.part)),
          parser_(contents.archive, sheet.part,
                  {[this](std::string_view element, const Attributes& attributes) { start(element, attributes); },
                   [this](std::string_view element) { end(element); },
                   [this](std::string_view text) {
                       if (takes_text_) text_ += text;
                   }}) {}

    std::optional<TableRow> next() {
        while (rows_.empty() && parser_.go_on()) {
        }
        if (rows_.empty()) return std::nullopt;
        TableRow row = std::move(rows_.front());
        rows_.pop_front();
        return row;
    }

private:
    [[nodiscard]] TaskError damaged(const Message& wording, std::string_view value) const {
        return contents_.refusals.damaged(part_, wording, value);
    }

    void start(std::string_view element, const Attributes& attributes) {
        if (element == "row") {
            start_row(attributes.of("r"));
        } else if (element == "c" && is_row_open_) {
            start_cell(attributes);
        } else if (element == "f") {
            has_formula_ = true;
        } else if (element == "rPh") {
            is_phonetic_ = true;
        }
        if (element == "v") has_value_ = true;
        takes_text_ = is_cell_open_ && !is_phonetic_ && (element == "v" || element == "t");
    }

    void end(std::string_view element) {
        takes_text_ = false;
        if (element == "rPh") {
            is_phonetic_ = false;
        } else if (element == "c" && is_cell_open_) {
            end_cell();
        } else if (element == "row" && is_row_open_) {
            end_row();
        }
    }

    void start_row(std::string_view number) {
        if (!number.empty()) {
            const auto given = number_from<std::size_t>(number);
            if (!given || *given <= row_ || *given > rows_of_a_sheet) throw damaged(words::out_of_order, number);
            row_ = *given - 1;
        } else if (row_ == rows_of_a_sheet) {
            throw damaged(words::out_of_order, "row");
        }
        column_ = 0;
        is_row_open_ = true;
        open_row_ = {SourceText::cell_offset(row_, 0), {}};
    }

    void start_cell(const Attributes& attributes) {
        const std::string_view name = attributes.of("r");
        if (!name.empty()) {
            const auto position = position_of(name);
            if (!position || position->row != row_) throw damaged(words::bad_cell_name, name);
            if (position->column < column_) throw damaged(words::out_of_order, name);
            column_ = position->column;
        } else if (column_ == SourceText::widest_sheet) {
            throw damaged(words::out_of_order, "cell");
        }
        type_ = attributes.of("t");
        const auto style = number_from<std::size_t>(attributes.of("s"));
        is_date_ = style && *style < contents_.is_date_style.size() && contents_.is_date_style[*style];
        is_cell_open_ = true;
        has_formula_ = has_value_ = false;
        text_.clear();
    }

    void end_cell() {
        is_cell_open_ = false;
        const std::size_t offset = SourceText::cell_offset(row_, column_++);
        if (has_formula_ && !has_value_ && type_ != "inlineStr") errors_.add(source_, offset, words::no_cached_value);
        if (text_.empty()) return;
        TableCell cell = cell_of(offset);
        if (column_ > columns_read) {
            if (!std::exchange(is_told_wide_, true))
                errors_.add(source_, offset, words::too_many_columns, columns_read);
            return;
        }
        pad_to(column_ - 1);
        open_row_.cells.push_back(std::move(cell));
    }

    TableCell cell_of(std::size_t offset) const {
        using Kind = InputValue::Kind;
        if (type_ == "s") {
            const auto index = number_from<std::size_t>(text_);
            if (!index || *index >= contents_.shared_texts.size()) throw damaged(words::bad_reference, text_);
            return {contents_.shared_texts[*index], offset};
        }
        if (type_ == "inlineStr" || type_ == "str") return {unescaped(text_), offset};
        if (type_ == "b") return {is_true(text_) ? "TRUE" : "FALSE", offset, Kind::boolean};
        if (type_ == "e") return {text_, offset, Kind::error_cell};
        if (type_ == "d") {  // as ISO 8601 writes a date
            std::string date = text_;
            std::ranges::replace(date, 'T', ' ');
            return {date, offset, Kind::date_cell};
        }
        const auto value = number_from<double>(text_);
        if (!value || !std::isfinite(*value)) throw damaged(words::bad_number, text_);
        if (is_date_) {
            const auto date = date_of_serial(*value, contents_.counts_from_1904);
            if (date) return {to_utf8(ordinary_text(*date)), offset, Kind::date_cell};
        }
        return {number_shown(*value), offset, Kind::number_cell};
    }

    void pad_to(std::size_t columns) {
        while (open_row_.cells.size() < columns) {
            open_row_.cells.push_back({{}, SourceText::cell_offset(row_, open_row_.cells.size())});
        }
    }

    void end_row() {
        is_row_open_ = false;
        while (next_area_ < areas_.size() && areas_[next_area_].first.row <= row_)
            active_.push_back(areas_[next_area_++]);
        std::erase_if(active_, [&](const Area& area) { return area.last.row < row_; });
        // Areas do not overlap: no row has more of them than columns.
        if (active_.size() > columns_read) throw damaged(words::too_many, "mergeCell");
        for (const Area& area : active_) {
            const std::size_t end = std::min(area.last.column + 1, columns_read);
            pad_to(end);
            for (std::size_t column = area.first.column; column < end; ++column) {
                const bool is_first = row_ == area.first.row && column == area.first.column;
                open_row_.cells[column].is_covered = !is_first;
            }
        }
        ++row_;
        rows_.push_back(std::move(open_row_));
    }

    Workbook::Contents& contents_;
    std::string part_;
    const SourceText& source_;
    InputErrors& errors_;
    std::vector<Area> areas_;
    std::size_t next_area_ = 0;
    std::vector<Area> active_;  ///< areas that the row at hand lies in
    std::deque<TableRow> rows_;
    TableRow open_row_{0, {}};
    std::size_t row_ = 0;     ///< of the row at hand, or of the one that follows without a number
    std::size_t column_ = 0;  ///< likewise
    bool is_row_open_ = false, is_cell_open_ = false, is_phonetic_ = false, takes_text_ = false;
    bool has_formula_ = false, has_value_ = false, is_date_ = false, is_told_wide_ = false;
    std::string type_;
    std::string text_;
    PartParser parser_;
};

}  // namespace

Workbook::Workbook(std::string file, std::string_view bytes, Language language)
    : contents_(std::make_unique<Contents>(std::move(file), bytes, language)) {}

Workbook::~Workbook() = default;

const std::vector<Workbook::Sheet>& Workbook::sheets() const { return contents_->sheets; }

bool Workbook::counts_from_1904() const { return contents_->counts_from_1904; }

NextRow Workbook::rows(const Sheet& sheet, const SourceText& source, InputErrors& errors) {
    const auto rows = std::make_shared<SheetRows>(*contents_, sheet, source, errors);
    return [rows] { return rows->next(); };
}

bool Workbook::looks_like(std::string_view bytes) {
    return bytes.starts_with("PK\x03\x04") || bytes.starts_with("\xD0\xCF\x11\xE0");
}

bool is_date_format(std::string_view code) {
    constexpr std::string_view letters = "yYmMdDhHsS";
    for (std::size_t at = 0; at < code.size() && code[at] != ';'; ++at) {
        switch (code[at]) {
            case '"': at = std::min(code.find('"', at + 1), code.size()); break;
            case '\\':
            case '_':
            case '*': ++at; break;
            case '[': {
                const std::size_t end = std::min(code.find(']', at), code.size());
                const std::string_view inside = code.substr(at + 1, end - at - 1);
                // [h]:mm counts hours; [Red], [$-804] and [>9] are no parts of a date
                if (!inside.empty() && inside.find_first_not_of("hHmMsS") == std::string_view::npos) return true;
                at = end;
                break;
            }
            default:
                if (letters.find(code[at]) != std::string_view::npos) return true;
        }
    }
    return false;
}

}  // namespace vantlo
