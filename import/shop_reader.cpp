#include "import/shop_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>

#include "automation/calendar.h"
#include "automation/number_text.h"
#include "import/csv_records.h"
#include "import/json_reader.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message byte_no_utf8   = {"字节 0x{:02X} 不是 UTF-8；GB18030 编码的文件请加 --encoding gb18030", "the byte 0x{:02X} is no UTF-8; for a file in GB18030, say --encoding gb18030"};
constexpr Message byte_no_gb18030 = {"字节 0x{:02X} 不是 GB18030", "the byte 0x{:02X} is no GB18030"};
constexpr Message unknown_part   = {"没有“{}”这一部分", "unknown part \"{}\""};
constexpr Message unknown_table  = {"没有数据表 {}", "unknown table {}"};
constexpr Message unknown_bill   = {"没有单据种类 {}", "unknown kind of bill {}"};
constexpr Message unknown_field  = {"没有“{}”这个字段", "unknown field \"{}\""};
constexpr Message field_missing  = {"缺少“{}”", "\"{}\" is missing"};
constexpr Message field_empty    = {"“{}”为空", "\"{}\" is empty"};
constexpr Message field_ignored  = {"“{}”：{} 单据不使用此字段，请去掉", "\"{}\": a {} does not read this field; leave it out"};
constexpr Message no_bill_lines  = {"单据没有行", "the bill has no lines"};
constexpr Message shared_id      = {"编号 {}（{} 与 {} 共用编号）", "the id {}, which a {} and a {} cannot both have,"};
constexpr Message date_is_null   = {"{}：{} 会保存为没有日期", "{}: {} would be kept as no date"};
constexpr Message given_twice    = {"{} 出现了两次；前一次在 {}:{}:{}", "{} is given twice; it stands at {}:{}:{} already"};
constexpr Message object_expected = {"此处应为对象，而不是{}", "an object is expected, not {}"};
constexpr Message list_expected  = {"{}：应为列表，而不是{}", "{}: a list is expected, not {}"};
constexpr Message date_expected  = {"{}：应为 2024-03-05 这样的日期，而不是{}", "{}: a date like 2024-03-05 is expected, not {}"};
constexpr Message text_expected  = {"{}：应为文字，而不是{}", "{}: a text is expected, not {}"};
constexpr Message number_expected = {"{}：应为数字，而不是{}", "{}: a number is expected, not {}"};
constexpr Message whole_number_expected = {"{}：应为整数，而不是{}", "{}: a whole number is expected, not {}"};
constexpr Message text_with_nul  = {"{}：文字中有 NUL 字符", "{}: the text contains the character NUL"};
constexpr Message text_with_control = {"{}：文字中有换行或其他控制字符", "{}: the text contains a line break or another control character"};
constexpr Message text_too_long  = {"{}：有 {} 个字符，只能保存 {} 个：{}", "{}: {:character|characters}, where only {:is|are} kept: {}"};
constexpr Message number_too_large = {"{}：{} 太大", "{}: {} is too large"};
constexpr Message number_inexact = {"{}：{} 会保存为 {}", "{}: {} would be kept as {}"};
constexpr Message number_outside = {"{}：{} 不在 {} 到 {} 之间", "{}: {} is outside {} to {}"};
constexpr Message a_list         = {"列表", "a list"};
constexpr Message an_object      = {"对象", "an object"};
constexpr Message quoted         = {"“{}”", "\"{}\""};
constexpr Message quoted_and_cut = {"“{}……”", "\"{}...\""};
// clang-format on

}  // namespace words

namespace {

using Kind = InputValue::Kind;

bool is_text(const InputValue& value) { return value.kind == Kind::text || value.kind == Kind::cell; }
bool is_number(const InputValue& value) { return value.kind == Kind::number || value.kind == Kind::cell; }

/// All of the text as a number, read without regard to the locale.
template <typename Number>
std::optional<Number> number_from(const std::string& text) {
    Number number{};
    const char* const end = text.data() + text.size();
    const auto [stopped, problem] = std::from_chars(text.data(), end, number);
    if (stopped != end || problem == std::errc::invalid_argument) return std::nullopt;
    if (problem == std::errc::result_out_of_range) return std::numeric_limits<Number>::max();
    return number;
}

/// Whether people may write lines into a field. Every other text is a key, or is shown beside one.
bool may_have_lines(std::string_view field) { return field == "remarks" || field == "name"; }

/// Line breaks, tabs and other characters that show nothing and change what stands around them.
bool has_control_character(TextView text) {
    return std::ranges::any_of(text, [](char16_t unit) {
        return unit < u' ' || (unit >= 0x7F && unit < 0xA0) || unit == 0x2028 || unit == 0x2029;
    });
}

/// The required fields of a line, and of a header that is about one kind of goods.
constexpr std::string_view needed_fields[] = {"goods", "quantity"};

}  // namespace

void ShopReader::read(const std::string& path, const FileOptions& options) {
    std::optional<DecodedFile> decoded = read_file(path, options.encoding, errors_);
    if (!decoded) return;
    source_ = sources_.emplace_back(std::make_unique<const SourceText>(path, std::move(decoded->text))).get();
    for (const DecodedFile::Fault& fault : decoded->faults) {
        tell(fault.offset, options.encoding == Encoding::utf8 ? words::byte_no_utf8 : words::byte_no_gb18030,
             fault.byte);
    }
    if (path.ends_with(".csv")) {
        read_csv(*source_, options.table, errors_, [&](const MasterTable* table, const InputValue& record) {
            table == nullptr ? take_bill(record) : take_row(*table, record);
        });
    } else if (path.ends_with(".jsonl") || path.ends_with(".ndjson")) {
        read_json_lines(*source_, errors_, [&](InputValue& document) { take_json_line(document); });
    } else {
        read_document();
    }
}

void ShopReader::read_document() {
    const auto take_element = [&](const InputValue& list, const InputValue& element) {
        const MasterTable* const table = find_master_table(list.name);
        if (table != nullptr) take_row(*table, element);
        if (list.name == "bills") take_bill(element);
    };
    const std::optional<InputValue> document = read_json(*source_, errors_, take_element);
    if (!document || !expect_object(*document)) return;
    for (const InputValue& part : document->children) {
        if (find_master_table(part.name) == nullptr && part.name != "bills") {
            tell(part.name_offset, words::unknown_part, part.name);
        } else if (part.kind != Kind::list) {
            tell(part.offset, words::list_expected, part.name, shown(part));
        }
    }
}

void ShopReader::take_json_line(InputValue& document) {
    if (!expect_object(document)) return;
    const InputValue* const name = document.member("table");
    if (name == nullptr) return take_bill(document);
    const MasterTable* const table = is_text(*name) ? find_master_table(name->text) : nullptr;
    if (table == nullptr) return tell(name->offset, words::unknown_table, shown(*name));
    std::erase_if(document.children, [](const InputValue& member) { return member.name == "table"; });
    take_row(*table, document);
}

void ShopReader::take_row(const MasterTable& table, const InputValue& row) {
    if (!expect_object(row)) return;
    const std::span<const BillColumn> keys = table.columns.first(table.keys);
    for (const BillColumn& column : keys) {
        if (!is_given(row, column.field)) return;
    }
    Record values = read_record(row, table.name, table.columns, {});
    std::string key(table.field), what;
    for (const BillColumn& column : keys) {
        const Text text = to_text(values.value(column.column));
        if (text.empty()) return;  // reported as no text
        if (!what.empty()) what += ' ';
        what += to_utf8(trim_blanks(text));
        key += '\n';
        key += to_utf8(trim_blanks(text));
    }
    if (!is_new(key, fmt::format("{} {}", table.field, what), row.offset)) return;
    MasterRow& stored = shop_.master.emplace_back(MasterRow{&table, std::move(values)});
    for (const BillColumn& column : table.columns) {
        if (row.member(column.field) == nullptr) stored.left_out.push_back(column.column);
    }
}

void ShopReader::take_bill(const InputValue& object) {
    if (!expect_object(object) || !is_given(object, "kind") || !is_given(object, "id")) return;
    const InputValue& kind = *object.member("kind");
    Bill bill{find_bill_kind(kind.text), {}, {}, {}};
    if (!is_text(kind) || bill.kind == nullptr) return tell(kind.offset, words::unknown_bill, shown(kind));
    const BillTable& header = *bill.kind->header;
    const InputValue& id = *object.member("id");
    bill.id = read_text(id, "id", limits_.of(header.name, header.id_column));
    if (bill.id.empty()) return;  // reported as no text
    bill.header = read_record(object, header.name, header.columns, {"kind", "id", "lines"});
    check_needed(object, header.columns);
    check_use(object, *bill.kind, BillPart::header, bill.header);
    const InputValue* const lines = object.member("lines");
    if (lines == nullptr) return tell_missing(object, "lines");
    if (lines->kind != Kind::list) return tell(lines->offset, words::list_expected, "lines", shown(*lines));
    if (lines->children.empty()) return tell(lines->offset, words::no_bill_lines);
    for (const InputValue& line : lines->children) {
        if (!expect_object(line)) continue;
        check_needed(line, bill.kind->lines->columns);
        bill.lines.push_back(read_record(line, bill.kind->lines->name, bill.kind->lines->columns, {}));
        check_use(line, *bill.kind, BillPart::line, bill.lines.back());
    }
    const std::string trimmed = to_utf8(trim_blanks(bill.id));
    const std::string key = to_utf8(header.name) + "\n" + trimmed;
    const auto first = kinds_.try_emplace(key, bill.kind).first->second;
    const std::string what = first == bill.kind
                                 ? fmt::format("{} {}", bill.kind->name, trimmed)
                                 : say(errors_.language(), words::shared_id, trimmed, first->name, bill.kind->name);
    if (!is_new(key, what, id.offset)) return;
    shop_.bills.push_back(std::move(bill));
    bill_origins_.push_back({source_, id.offset});
}

Record ShopReader::read_record(const InputValue& object, TextView table, std::span<const BillColumn> columns,
                               std::initializer_list<std::string_view> others) {
    for (const InputValue& member : object.children) {
        const bool is_known = std::ranges::find(columns, member.name, &BillColumn::field) != columns.end() ||
                              std::ranges::find(others, member.name) != others.end();
        if (!is_known) tell(member.name_offset, words::unknown_field, member.name);
    }
    Record record;
    std::string_view field_before;
    for (const BillColumn& column : columns) {
        if (std::exchange(field_before, column.field) == column.field) {  // one field fills two columns
            record.set(column.column, Variant(record.fields().back().value));
            continue;
        }
        const InputValue* const value = object.member(column.field);
        record.set(column.column, value == nullptr ? empty_value(column.type)
                                                   : read_value(*value, column, limits_.of(table, column.column)));
    }
    return record;
}

void ShopReader::tell_missing(const InputValue& object, std::string_view field) {
    tell(object.offset, words::field_missing, field);
}

void ShopReader::check_needed(const InputValue& object, std::span<const BillColumn> columns) {
    for (const std::string_view field : needed_fields) {
        const auto column = std::ranges::find(columns, field, &BillColumn::field);
        if (column == columns.end()) continue;
        if (column->type == ColumnType::text) {
            is_given(object, field);
        } else if (object.member(field) == nullptr) {
            tell_missing(object, field);
        }
    }
}

void ShopReader::check_use(const InputValue& object, const BillKind& kind, BillPart part, const Record& record) {
    const FieldUse& use = field_use_of(kind);
    for (const BillColumn& column : columns_of(kind, part)) {
        if (use.is_warehouse(part, column.field)) {
            is_given(object, column.field);
        } else if (use.is_ignored(part, column.field) && !is_left_out(record, column.column)) {
            tell(object.member(column.field)->name_offset, words::field_ignored, column.field, kind.name);
        }
    }
}

Variant ShopReader::read_value(const InputValue& value, const BillColumn& column, const ColumnLimits::Limit& limit) {
    switch (column.type) {
        case ColumnType::text: return read_text(value, column.field, limit);
        case ColumnType::single: return read_single(value, column.field);
        case ColumnType::whole_number: return read_whole_number(value, column.field, limit);
        case ColumnType::date: break;
    }
    if (value.kind == Kind::null) return Null{};
    // A time alone would be read as a time on 30 December 1899.
    const bool has_day = is_text(value) && value.text.find_first_of("-/") != std::string::npos;
    const std::optional<Date> date = has_day ? date_from_text(from_utf8(value.text)) : std::nullopt;
    if (date && date->days != 0) return *date;
    if (date) {  // 30 December 1899: the component writes null for it
        tell(value.offset, words::date_is_null, column.field, shown(value));
        return Null{};
    }
    tell(value.offset, words::date_expected, column.field, shown(value));
    return Null{};
}

Text ShopReader::read_text(const InputValue& value, std::string_view field, const ColumnLimits::Limit& limit) {
    if (!is_text(value)) {
        tell(value.offset, words::text_expected, field, shown(value));
        return {};
    }
    Text text = from_utf8(value.text);
    if (text.find(u'\0') != Text::npos) {
        tell(value.offset, words::text_with_nul, field);
    } else if (has_control_character(text) && !may_have_lines(field)) {
        tell(value.offset, words::text_with_control, field);
    } else if (text.size() > limit.longest_text) {
        tell(value.offset, words::text_too_long, field, Count(text.size()), Count(limit.longest_text), shown(value));
    }
    return text;
}

Variant ShopReader::read_single(const InputValue& value, std::string_view field) {
    if (value.kind == Kind::null) return Null{};
    const std::optional<double> number = is_number(value) ? number_from<double>(value.text) : std::nullopt;
    if (!number || !std::isfinite(*number)) {
        tell(value.offset, words::number_expected, field, shown(value));
    } else if (std::abs(*number) > double{std::numeric_limits<float>::max()}) {
        tell(value.offset, words::number_too_large, field, shown(value));
    } else {
        const auto single = static_cast<float>(*number);
        const Text kept = number_text(single);
        // A Single keeps seven digits: a number that it would change is refused.
        if (double_from_text(kept) == number) return single;
        tell(value.offset, words::number_inexact, field, shown(value), to_utf8(kept));
    }
    return 0.0F;
}

Variant ShopReader::read_whole_number(const InputValue& value, std::string_view field,
                                      const ColumnLimits::Limit& limit) {
    if (value.kind == Kind::null) return Null{};
    const std::optional<std::int64_t> number = is_number(value) ? number_from<std::int64_t>(value.text) : std::nullopt;
    const std::int64_t least =
        limit.is_short ? std::numeric_limits<std::int16_t>::min() : std::numeric_limits<std::int32_t>::min();
    const std::int64_t greatest = -1 - least;
    if (!number) {
        tell(value.offset, words::whole_number_expected, field, shown(value));
    } else if (*number < least || *number > greatest) {
        tell(value.offset, words::number_outside, field, shown(value), least, greatest);
    } else {
        return static_cast<std::int32_t>(*number);
    }
    return std::int32_t{0};
}

/// A value as an error shows it: texts quoted, long ones cut.
std::string ShopReader::shown(const InputValue& value) const {
    constexpr std::size_t longest = 40;
    const Language language = errors_.language();
    switch (value.kind) {
        case Kind::list: return say(language, words::a_list);
        case Kind::object: return say(language, words::an_object);
        case Kind::null:
        case Kind::boolean:
        case Kind::number: return value.text;
        case Kind::text:
        case Kind::cell: break;
    }
    const Text text = from_utf8(value.text);
    if (text.size() <= longest) return say(language, words::quoted, value.text);
    return say(language, words::quoted_and_cut, to_utf8(text.substr(0, longest)));
}

bool ShopReader::expect_object(const InputValue& value) {
    if (value.kind == Kind::object) return true;
    tell(value.offset, words::object_expected, shown(value));
    return false;
}

/// True if present, of any type; reports missing or blank.
bool ShopReader::is_given(const InputValue& object, std::string_view field) {
    const InputValue* const value = object.member(field);
    if (value == nullptr) {
        tell_missing(object, field);
    } else if (is_text(*value) && value->text.find_first_not_of(' ') == std::string::npos) {
        tell(value->offset, words::field_empty, field);
    } else {
        return true;
    }
    return false;
}

bool ShopReader::is_new(const std::string& key, const std::string& what, std::size_t offset) {
    const auto [first, is_inserted] = seen_.try_emplace(key, Origin{source_, offset});
    if (is_inserted) return true;
    const Place place = first->second.source->place(first->second.offset);
    tell(offset, words::given_twice, what, first->second.source->file(), place.line, place.column);
    return false;
}

}  // namespace vantlo
