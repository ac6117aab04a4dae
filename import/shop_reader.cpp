#include "import/shop_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>

#include "automation/calendar.h"
#include "automation/number_text.h"
#include "import/json_reader.h"
#include "import/table_records.h"
#include "import/workbook.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message byte_no_utf8   = {"字节 0x{:02X} 不是 UTF-8；GB18030 编码的文件请加 --encoding gb18030", "the byte 0x{:02X} is no UTF-8; for a file in GB18030, say --encoding gb18030"};
constexpr Message byte_no_text   = {"字节 0x{:02X} 不是 {}", "the byte 0x{:02X} is no {}"};
constexpr Message half_a_pair    = {"代码单元 0x{:04X} 只是半个字符", "the code unit 0x{:04X} is half a character"};
constexpr Message no_conversion  = {"本系统不能转换 {}", "this system converts no {}"};
constexpr Message probably_chinese = {"此文件可能是 {} 编码（{} 个字符中 {}% 在其中常用，{} 中为 {}%）；请加 --encoding {}",
                                         "the file is probably in {} (of {} characters {} % are in daily use there, in {} {} %); say --encoding {}"};
constexpr Message probably_utf   = {"此文件可能是 {} 编码；请加 --encoding {}", "the file is probably in {}; say --encoding {}"};
constexpr Message probably_other = {"此文件既不是 UTF-8，也不是 GB18030 或 Big5；请另存为 UTF-8", "the file is neither in UTF-8 nor in GB18030 nor in Big5; save it as UTF-8"};
constexpr Message format_unknown = {"请用 --format 说明标准输入的格式：csv、json、jsonl 或 xlsx", "say with --format what standard input is: csv, json, jsonl or xlsx"};
constexpr Message detected_file  = {"{}: 已识别：{}", "{}: detected: {}"};
constexpr Message detected_chinese = {"{} 编码（{} 个字符中 {}% 在其中常用，{} 中为 {}%）", "{} (of {} characters {} % are in daily use there, in {} {} %)"};
constexpr Message detected_workbook = {".xlsx 工作簿", "an .xlsx workbook"};
constexpr Message detected_sheets = {"工作表 {}，未读取 {}", "the sheets {}, not {}"};
constexpr Message no_such_sheet  = {"没有工作表“{}”；有 {}", "there is no sheet \"{}\"; there are {}"};
constexpr Message several_sheets = {"多张工作表有单据：{}；请用 --sheet 指定一张", "several sheets have bills: {}; say one of them with --sheet"};
constexpr Message no_sheet       = {"没有工作表有“bill.kind”列，也没有以数据表命名的（warehouses、goods、units）；有 {}；请用 --sheet 和 --table 指定", "no sheet has a column \"bill.kind\", and none is named after a table (warehouses, goods, units); there are {}; say which with --sheet and --table"};
constexpr Message detected_plain = {"{} 编码", "{}"};
constexpr Message by_semicolon   = {"以分号分隔", "values between semicolons"};
constexpr Message by_tab         = {"以制表符分隔", "values between tabs"};
constexpr Message by_bar         = {"以竖线分隔", "values between bars"};
constexpr Message list_comma     = {"，", ", "};
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
constexpr Message given_twice    = {"{} 出现了两次；前一次在 {}", "{} is given twice; it stands at {} already"};
constexpr Message object_expected = {"此处应为对象，而不是{}", "an object is expected, not {}"};
constexpr Message list_expected  = {"{}：应为列表，而不是{}", "{}: a list is expected, not {}"};
constexpr Message date_expected  = {"{}：应为 2024-03-05 这样的日期，而不是{}", "{}: a date like 2024-03-05 is expected, not {}"};
constexpr Message text_expected  = {"{}：应为文字，而不是{}", "{}: a text is expected, not {}"};
constexpr Message date_ambiguous = {"{}：{} 可以有两种读法；请加 --date-format dmy（日在前）或 mdy（月在前）", "{}: {} can be read in two ways; say --date-format dmy or --date-format mdy"};
constexpr Message mark_ambiguous = {"{}：{} 中的标点可能是小数点，也可能是千位分隔；请加 --decimal point 或 --decimal comma", "{}: the mark in {} may begin decimals or part thousands; say --decimal point or --decimal comma"};
constexpr Message comma_not_known = {"{}：应为数字，而不是{}；若逗号是小数点，请加 --decimal comma", "{}: a number is expected, not {}; where a comma begins decimals, say --decimal comma"};
constexpr Message number_with_text = {"{}：数字后面还有文字：{}；单位请另填一列", "{}: there is more than a number: {}; a unit has a column of its own"};
constexpr Message number_expected = {"{}：应为数字，而不是{}", "{}: a number is expected, not {}"};
constexpr Message whole_number_expected = {"{}：应为整数，而不是{}", "{}: a whole number is expected, not {}"};
constexpr Message digits_lost    = {"{}：{} 作为数字保存，电子表格只保留 15 位；请将单元格设为文本后重新输入", "{}: {} is kept as a number, of which a spreadsheet keeps 15 digits; format the cell as text and type it again"};
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

bool is_text(const InputValue& value) {
    return value.kind == Kind::text || value.kind == Kind::cell || value.kind == Kind::number_cell;
}

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

/// Whether a number of a sheet has more digits than the 15 that a sheet keeps.
bool has_lost_digits(const std::string& number) {
    const std::optional<double> value = number_from<double>(number);
    return value && std::abs(*value) >= 1e15;
}

/// Whether people may write lines into a field. Every other text is a key, or is shown beside one.
bool may_have_lines(std::string_view field) { return field == "remarks" || field == "name"; }

/// Line breaks, tabs and other characters that show nothing and change what stands around them.
bool has_control_character(TextView text) {
    return std::ranges::any_of(text, [](char16_t unit) {
        return unit < u' ' || (unit >= 0x7F && unit < 0xA0) || unit == 0x2028 || unit == 0x2029;
    });
}

/// What the end of a file's name says; nothing where its text has to say it.
std::optional<FileFormat> format_of_name(const std::string& path) {
    const std::string name = lower_case(path);
    if (name.ends_with(".csv") || name.ends_with(".tsv")) return FileFormat::csv;
    if (name.ends_with(".xlsx") || name.ends_with(".xlsm")) return FileFormat::workbook;
    if (name.ends_with(".jsonl") || name.ends_with(".ndjson")) return FileFormat::json_lines;
    if (name.ends_with(".txt")) return std::nullopt;
    return FileFormat::json;
}

std::string stem_of(const std::string& path) { return std::filesystem::path(path).stem().string(); }

FileFormat format_of_text(std::string_view text) {
    const std::string_view inner = without_blanks(text);
    return inner.starts_with('{') || inner.starts_with('[') ? FileFormat::json : FileFormat::csv;
}

/// The required fields of a line, and of a header that is about one kind of goods.
constexpr std::string_view needed_fields[] = {"goods", "quantity"};

}  // namespace

void ShopReader::read(const std::string& path, const FileOptions& options) {
    const std::optional<FileFormat> named = options.format ? options.format : format_of_name(path);
    if (path == "-" && !options.format) return errors_.add(path, words::format_unknown);
    const std::optional<std::string> bytes = read_bytes(path, errors_);
    if (!bytes) return;
    detected_here_.clear();
    rules_ = {options.decimal, false, options.date_order, false};
    if (named == FileFormat::workbook || (!options.format && Workbook::looks_like(*bytes))) {
        try {
            read_workbook(path, *bytes, options);
        } catch (const TaskError& refusal) {
            errors_.add(refusal);
        }
    } else if (decode_file(path, *bytes, options.encoding)) {
        read_text_file(named.value_or(format_of_text(source_->text())), options);
    }
    if (detected_here_.empty()) return;
    detected_.push_back(say(errors_.language(), words::detected_file, path, listed(detected_here_)));
}

void ShopReader::read_text_file(FileFormat format, const FileOptions& options) {
    switch (format) {
        case FileFormat::csv: read_csv(options); break;
        case FileFormat::json_lines:
            read_json_lines(*source_, errors_, [&](InputValue& document) { take_json_line(document); });
            break;
        case FileFormat::json:
        case FileFormat::workbook: read_document(); break;
    }
}

bool ShopReader::decode_file(const std::string& path, std::string_view bytes, Encoding said) {
    Encoding encoding = said;
    if (said == Encoding::detect) {
        const EncodingGuess guess = guess_encoding(bytes);
        encoding = guess.is_certain ? guess.encoding : Encoding::utf8;
        if (encoding != Encoding::utf8) note_detected(guess);
    }
    std::optional<DecodedText> decoded = decode(bytes, encoding);
    if (!decoded) {
        errors_.add(path, words::no_conversion, name_of(encoding).shown);
        return false;
    }
    source_ = sources_.emplace_back(std::make_unique<const SourceText>(path, std::move(decoded->text))).get();
    for (const DecodedText::Fault& fault : decoded->faults) {
        if (fault.kind == DecodedText::Fault::Kind::half_pair) {
            tell(fault.offset, words::half_a_pair, fault.code);
        } else if (encoding == Encoding::utf8) {
            tell(fault.offset, words::byte_no_utf8, fault.code);
        } else {
            tell(fault.offset, words::byte_no_text, fault.code, name_of(encoding).shown);
        }
    }
    if (decoded->faults.size() >= InputErrors::kept) explain_faults(bytes);
    return true;
}

/// Says what a file with many invalid bytes probably is.
void ShopReader::explain_faults(std::string_view bytes) {
    const EncodingGuess guess = guess_encoding(bytes);
    const std::string& path = source_->file();
    const EncodingName& name = name_of(guess.encoding);
    if (guess.is_chinese()) {
        errors_.explain(path, words::probably_chinese, name.shown, guess.best().characters, guess.best().percent,
                        name_of(guess.other_encoding()).shown, guess.other().percent, name.name);
    } else if (guess.is_certain) {
        errors_.explain(path, words::probably_utf, name.shown, name.name);
    } else {
        errors_.explain(path, words::probably_other);
    }
}

void ShopReader::note_detected(const EncodingGuess& guess) {
    const Language language = errors_.language();
    const EncodingName& name = name_of(guess.encoding);
    if (guess.is_chinese()) {
        detected_here_.push_back(say(language, words::detected_chinese, name.shown, guess.best().characters,
                                     guess.best().percent, name_of(guess.other_encoding()).shown,
                                     guess.other().percent));
    } else {
        detected_here_.push_back(say(language, words::detected_plain, name.shown));
    }
}

void ShopReader::read_csv(const FileOptions& options) {
    const CsvDialect dialect = detect_dialect(source_->text(), options.csv);
    const Language language = errors_.language();
    if (!options.csv.delimiter) {
        if (dialect.delimiter == ';') detected_here_.push_back(say(language, words::by_semicolon));
        if (dialect.delimiter == '\t') detected_here_.push_back(say(language, words::by_tab));
        if (dialect.delimiter == '|') detected_here_.push_back(say(language, words::by_bar));
    }
    // Where the comma does not separate values, it may be the mark of decimals, and the point that of thousands.
    rules_.point_may_group = dialect.delimiter != ',';
    CsvReader rows(*source_, errors_, dialect);
    read_rows([&] { return rows.next(); }, options.table.empty() ? stem_of(source_->file()) : options.table);
}

void ShopReader::read_rows(const NextRow& next, const std::string& table) {
    read_table(*source_, next, table, errors_, [&](const MasterTable* master, const InputValue& record) {
        master == nullptr ? take_bill(record) : take_row(*master, record);
    });
}

void ShopReader::read_workbook(const std::string& path, std::string_view bytes, const FileOptions& options) {
    Workbook workbook(path, bytes, errors_.language());
    const bool is_named = options.format || format_of_name(path) == FileFormat::workbook;
    if (!is_named) detected_here_.push_back(say(errors_.language(), words::detected_workbook));
    rules_.counts_from_1904 = workbook.counts_from_1904();
    rules_.point_may_group = true;  // a text that looks like a number was typed where the sheet did not take it for one
    const auto source_of = [&](const Workbook::Sheet& sheet) {
        return sources_.emplace_back(std::make_unique<const SourceText>(SourceText::sheet(path, sheet.name))).get();
    };
    const std::vector<const Workbook::Sheet*> chosen = sheets_to_read(workbook, path, options);
    if (chosen.empty()) return;
    note_sheets(workbook, chosen);
    for (const Workbook::Sheet* const sheet : chosen) {
        source_ = source_of(*sheet);
        const std::string own_name = lower_case(sheet->name);
        const std::string table = !options.table.empty()                   ? options.table
                                  : find_master_table(own_name) != nullptr ? own_name
                                                                           : stem_of(path);
        read_rows(workbook.rows(*sheet, *source_, errors_), table);
    }
}

/// The sheets with master data or bills among those that are shown, or the one that the user names.
/// Returns  none, reported, where it is not clear which.
std::vector<const Workbook::Sheet*> ShopReader::sheets_to_read(Workbook& workbook, const std::string& path,
                                                               const FileOptions& options) {
    std::vector<const Workbook::Sheet*> with_values, with_bills, chosen;
    for (const Workbook::Sheet& sheet : workbook.sheets()) {
        if (!options.sheet.empty() && lower_case(sheet.name) == lower_case(options.sheet)) return {&sheet};
        if (!options.sheet.empty() || sheet.is_hidden) continue;
        const SourceText source = SourceText::sheet(path, sheet.name);
        InputErrors unheard(errors_.language());  // reading it will report them
        const NextRow next = workbook.rows(sheet, source, unheard);
        std::optional<TableRow> row = next();
        while (row && is_blank_row(*row)) row = next();
        if (!row) continue;
        with_values.push_back(&sheet);
        const bool has_bills = is_header_of_bills(*row);
        if (has_bills) with_bills.push_back(&sheet);
        if (has_bills || find_master_table(lower_case(sheet.name)) != nullptr) chosen.push_back(&sheet);
    }
    std::vector<std::string> names;
    for (const Workbook::Sheet& sheet : workbook.sheets()) names.push_back(sheet.name);
    if (!options.sheet.empty()) {
        errors_.add(path, words::no_such_sheet, options.sheet, listed(names));
        return {};
    }
    if (with_bills.size() > 1) {
        names.clear();
        for (const Workbook::Sheet* const sheet : with_bills) names.push_back(sheet->name);
        errors_.add(path, words::several_sheets, listed(names));
        return {};
    }
    if (!chosen.empty() || with_values.empty()) return chosen;
    if (with_values.size() == 1) return with_values;
    errors_.add(path, words::no_sheet, listed(names));
    return {};
}

void ShopReader::note_sheets(const Workbook& workbook, const std::vector<const Workbook::Sheet*>& chosen) {
    std::vector<std::string> read, left;
    for (const Workbook::Sheet& sheet : workbook.sheets()) {
        (std::ranges::find(chosen, &sheet) == chosen.end() ? left : read).push_back(sheet.name);
    }
    if (!left.empty()) {
        detected_here_.push_back(say(errors_.language(), words::detected_sheets, listed(read), listed(left)));
    }
}

std::string ShopReader::listed(const std::vector<std::string>& names) const {
    return fmt::format("{}", fmt::join(names, say(errors_.language(), words::list_comma)));
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
    for (const BillColumn& column : keys.first(table.needed)) {
        if (!is_given(row, column.field)) return;
    }
    Record values = read_record(row, table.name, table.columns, {});
    std::string key(table.field), what;
    for (const BillColumn& column : keys) {
        const Text text = to_text(values.value(column.column));
        const bool is_needed = &column - keys.data() < static_cast<std::ptrdiff_t>(table.needed);
        if (text.empty() && is_needed) return;  // reported as no text
        if (!what.empty() && !text.empty()) what += ' ';
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
    return read_date(value, column.field);
}

Variant ShopReader::read_date(const InputValue& value, std::string_view field) {
    if (value.kind == Kind::null) return Null{};
    CellReading<Date> reading{CellReading<Date>::State::none};
    if (value.kind == Kind::cell || value.kind == Kind::number_cell) {
        reading = date_of_cell(value.text, rules_);
    } else if (value.kind == Kind::date_cell || is_text(value)) {
        // A time alone would be read as a time on 30 December 1899.
        const bool has_day = value.text.find_first_of("-/") != std::string::npos;
        const std::optional<Date> date = has_day ? date_from_text(from_utf8(value.text)) : std::nullopt;
        if (date) reading = {CellReading<Date>::State::read, *date};
    }
    if (reading.state == CellReading<Date>::State::ambiguous) {
        tell(value.offset, words::date_ambiguous, field, shown(value));
    } else if (reading.state != CellReading<Date>::State::read) {
        tell(value.offset, words::date_expected, field, shown(value));
    } else if (reading.value.days == 0) {  // 30 December 1899: the component writes null for it
        tell(value.offset, words::date_is_null, field, shown(value));
    } else {
        return reading.value;
    }
    return Null{};
}

std::optional<std::string> ShopReader::plain_number(const InputValue& value, std::string_view field,
                                                    const Message& expected) {
    using State = CellReading<std::string>::State;
    if (value.kind == Kind::number || value.kind == Kind::number_cell) return value.text;
    const CellReading<std::string> reading =
        value.kind == Kind::cell ? number_of_cell(value.text, rules_) : CellReading<std::string>{State::none};
    switch (reading.state) {
        case State::read: return reading.value;
        case State::none: tell(value.offset, expected, field, shown(value)); break;
        case State::ambiguous: tell(value.offset, words::mark_ambiguous, field, shown(value)); break;
        case State::comma: tell(value.offset, words::comma_not_known, field, shown(value)); break;
        case State::with_text: tell(value.offset, words::number_with_text, field, shown(value)); break;
    }
    return std::nullopt;
}

Text ShopReader::read_text(const InputValue& value, std::string_view field, const ColumnLimits::Limit& limit) {
    if (!is_text(value)) {
        tell(value.offset, words::text_expected, field, shown(value));
        return {};
    }
    Text text = from_utf8(value.text);
    if (value.kind == Kind::number_cell && has_lost_digits(value.text)) {
        tell(value.offset, words::digits_lost, field, shown(value));
    } else if (text.find(u'\0') != Text::npos) {
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
    const std::optional<std::string> plain = plain_number(value, field, words::number_expected);
    if (!plain) return 0.0F;
    const std::optional<double> number = number_from<double>(*plain);
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
    const std::optional<std::string> plain = plain_number(value, field, words::whole_number_expected);
    if (!plain) return std::int32_t{0};
    const std::optional<std::int64_t> number = number_from<std::int64_t>(*plain);
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
        case Kind::number:
        case Kind::number_cell:
        case Kind::date_cell:
        case Kind::error_cell: return value.text;
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
    const Origin& before = first->second;
    // Counting lines takes as long as the file: not for the hundred thousandth fault.
    tell(offset, words::given_twice, what, errors_.keeps_more() ? before.source->where(before.offset) : "");
    return false;
}

}  // namespace vantlo
