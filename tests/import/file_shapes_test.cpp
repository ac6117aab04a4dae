#include <doctest/doctest.h>

#include <chrono>
#include <fstream>

#include "automation/calendar.h"
#include "automation/number_text.h"
#include "import/encoding.h"
#include "import/shop_reader.h"
#include "support/workbook_file.h"
#include "tests/support/printing.h"
#include "tests/support/temporary_folder.h"

// Files as programs and people really write them: each is read as what it says, or refused with place, reason and remedy.

namespace vantlo::test {
namespace {

/// Bytes with everything in them, NUL too.
std::string operator""_bytes(const char* text, std::size_t size) { return {text, size}; }

std::string shown(const Variant& value) {
    if (const Text* text = value.get_if<Text>()) return to_utf8(*text);
    if (const float* number = value.get_if<float>()) return to_utf8(number_text(*number));
    if (const auto* number = value.get_if<std::int32_t>()) return std::to_string(*number);
    if (const Date* date = value.get_if<Date>()) return to_utf8(ordinary_text(*date));
    return "null";
}

struct ReadFile {
    std::string shop;    ///< bills as `ID DATE: GOODS UNIT QTY, ...`, rows of master tables as `ID NAME`; `; ` between
    std::string faults;  ///< without the folder
    std::string detected;  ///< without the folder
};

ReadFile read(const std::string& name, const std::string& bytes, const FileOptions& options = {}) {
    const TemporaryFolder folder;
    const std::string path = folder.file(name.c_str());
    std::ofstream(path, std::ios::binary) << bytes;
    ShopReader reader(Language::english);
    reader.read(path, options);
    ReadFile found;
    for (const MasterRow& row : reader.shop().master) {
        const auto& fields = row.values.fields();
        found.shop += (found.shop.empty() ? "" : "; ") + shown(fields[0].value) + " " + shown(fields[1].value);
    }
    for (const Bill& bill : reader.shop().bills) {
        const BillColumn* const date =
            &*std::ranges::find(bill.kind->header->columns, std::string_view("date"), &BillColumn::field);
        found.shop +=
            (found.shop.empty() ? "" : "; ") + to_utf8(bill.id) + " " + shown(bill.header.value(date->column)) + ":";
        for (const Record& line : bill.lines) {
            const auto value = [&](const char16_t* column) { return shown(line.value(column)); };
            found.shop += (&line == bill.lines.data() ? " " : ", ") + value(u"Gid") + " " + value(u"Unit") + " " +
                          value(u"Actualqty");
        }
    }
    const auto without_folder = [&](std::string text) {
        const std::string prefix = path.substr(0, path.size() - name.size());
        for (std::size_t at = 0; (at = text.find(prefix, at)) != std::string::npos;) text.erase(at, prefix.size());
        return text;
    };
    found.faults = without_folder(reader.errors().text());
    for (const std::string& line : reader.detected()) found.detected += without_folder(line);
    return found;
}

std::string in_utf16(std::string_view text, bool is_big_endian) {
    std::string bytes;
    for (const char16_t unit : from_utf8(text)) {
        const char high = static_cast<char>(unit >> 8), low = static_cast<char>(unit & 0xFF);
        bytes += is_big_endian ? high : low;
        bytes += is_big_endian ? low : high;
    }
    return bytes;
}

struct Shape {
    const char* name;
    const char* file;
    std::string bytes;
    std::string shop;        ///< what it is read as; if it is refused, the fault as a whole
    std::string detected{};  ///< what is said about it
    FileOptions options{};
};

void check(std::span<const Shape> shapes) {
    for (const Shape& shape : shapes) {
        INFO(shape.name);
        const ReadFile found = read(shape.file, shape.bytes, shape.options);
        CHECK((found.faults.empty() ? found.shop : found.faults) == shape.shop);
        CHECK(found.detected == shape.detected);
    }
}

constexpr const char* head = "bill.kind,bill.id,bill.date,goods,unit,quantity,receiver\n";

std::string bills(const std::string& rows, char delimiter = ',') {
    std::string text = head + rows;
    std::ranges::replace(text, ',', delimiter);
    return text;
}

const std::string one_row = "stock-in,R1,2024-03-05,G1,箱,2,W1\n";
const std::string one_bill = "R1 2024-03-05: G1 箱 2";

TEST_CASE("CSV in any dialect is read, and what was detected is said") {
    const std::string crlf =
        "bill.kind;bill.id;bill.date;goods;unit;quantity;receiver\r\nstock-in;R1;2024-03-05;G1;箱;2;W1\r\n";
    const Shape shapes[] = {
        {"commas", "b.csv", bills(one_row), one_bill},
        {"semicolons, CR LF", "b.csv", crlf, one_bill, "b.csv: detected: values between semicolons"},
        {"tabs in a .csv", "b.csv", bills(one_row, '\t'), one_bill, "b.csv: detected: values between tabs"},
        {"a .tsv", "b.tsv", bills(one_row, '\t'), one_bill, "b.tsv: detected: values between tabs"},
        {"a .txt with tabs", "b.txt", bills(one_row, '\t'), one_bill, "b.txt: detected: values between tabs"},
        {"a .txt with JSON", "b.txt", "\n {\"goods\": [{\"id\": \"G1\", \"name\": \"n\"}]}", "G1 n"},
        {"bars", "b.csv", bills(one_row, '|'), one_bill, "b.csv: detected: values between bars"},
        {"sep=;", "b.csv", "sep=;\r\n" + crlf, one_bill, "b.csv: detected: values between semicolons"},
        {"quoted SEP=", "b.csv", "\"SEP=;\"\n" + crlf, one_bill, "b.csv: detected: values between semicolons"},
        {"sep= with a mark before it", "b.csv", "\xEF\xBB\xBFsep=;\n" + crlf, one_bill,
         "b.csv: detected: values between semicolons"},
        {"the delimiter named", "b.csv", crlf, one_bill, "", {.csv = {.delimiter = ';'}}},
        {"the wrong delimiter named",
         "b.csv",
         "bill.kind;bill.id\n",
         "b.csv:1:1: unknown column \"bill.kind;bill.id\"\nb.csv:1:1: the column \"bill.kind\" is missing\n"
         "b.csv:1:1: the column \"bill.id\" is missing\nb.csv:1:1: the column \"goods\" is missing\n"
         "b.csv:1:1: the column \"quantity\" is missing",
         "",
         {.csv = {.delimiter = ','}}},
        {"everything quoted", "b.csv",
         "\"bill.kind\",\"bill.id\",\"bill.date\",\"goods\",\"unit\",\"quantity\",\"receiver\"\n"
         "\"stock-in\",\"R1\",\"2024-03-05\",\"G1\",\"箱\",\"2\",\"W1\"\n",
         one_bill},
        {"single quotes named",
         "goods.csv",
         "id,name\nG1,'a, \"b\" ''c'''\n",
         "G1 a, \"b\" 'c'",
         "",
         {.csv = {.quote = '\''}}},
        {"an apostrophe is a letter else", "goods.csv", "id,name\nG1,'a'\n", "G1 'a'"},
        {"delimiters inside quotes", "goods.csv", "\"id\";\"name\"\nG1;\"a;b,c\nd\"\n", "G1 a;b,c\nd",
         "goods.csv: detected: values between semicolons"},
        {".CSV in capitals", "B.CSV", bills(one_row), one_bill},
        {".JsonL in capitals", "b.JsonL", "{\"table\": \"goods\", \"id\": \"G1\", \"name\": \"n\"}\n", "G1 n"},
        {"a file called otherwise, its format named",
         "b.dat",
         bills(one_row),
         one_bill,
         "",
         {.format = FileFormat::csv}},
        {"one column alone", "goods.csv", "id\nG1\n", "G1 "},
        {"an empty file", "b.csv", "", ""},
        {"no line end at the end", "b.csv", bills("stock-in,R1,2024-03-05,G1,箱,2,W1"), one_bill},
        {"lines that end with CR alone", "goods.csv", "id,name\rG1,n\r",
         "goods.csv:1:8: a carriage return alone ends no line"},
    };
    check(shapes);
}

TEST_CASE("Blank rows and columns, blanks around headings and a header on the first line alone are fine") {
    const Shape shapes[] = {
        {"blank rows before, between and behind", "b.csv",
         ",,,,,,\n" + std::string(head) + one_row + ",,,,,,\nstock-in,R1,2024-03-05,G2,箱,3,W1\n,,,,,,\n , ,,,,,\n",
         "R1 2024-03-05: G1 箱 2, G2 箱 3"},
        {"blank columns behind", "b.csv",
         "bill.kind,bill.id,bill.date,goods,unit,quantity,receiver,,\nstock-in,R1,2024-03-05,G1,箱,2,W1,,\n", one_bill},
        {"blank values behind the last column", "b.csv", bills("stock-in,R1,2024-03-05,G1,箱,2,W1,,,\n"), one_bill},
        {"a blank column between", "goods.csv", "id,,name\nG1,,n\n", "G1 n"},
        {"a value without a heading", "goods.csv", "id,,name\nG1,x,n\n",
         "goods.csv:2:4: a value in a column without a heading: \"x\""},
        {"an excess value", "goods.csv", "id,name\nG1,n,x,\n", "goods.csv:2:6: the row has 3 values for 2 columns"},
        {"a missing value", "goods.csv", "id,name\nG1\n", "goods.csv:2:1: the row has 1 value for 2 columns"},
        {"blanks around headings", "goods.csv", " id ,\u3000name\u00A0\nG1,n\n", "G1 n"},
        {"one heading twice", "goods.csv", "id,name, name\nG1,n,m\n",
         "goods.csv:1:9: the column \"name\" is given twice"},
        {"a header on the first line alone", "b.csv", bills(one_row + ",,,G2,箱,3,W1\n,,,G3,箱,4,W1\n"),
         "R1 2024-03-05: G1 箱 2, G2 箱 3, G3 箱 4"},
        {"the id on each line, the date on the first", "b.csv", bills(one_row + "stock-in,R1,,G2,箱,3,W1\n"),
         "R1 2024-03-05: G1 箱 2, G2 箱 3"},
        {"lines before any header", "b.csv", bills(",,,G2,箱,3,W1\n"), "b.csv:2:1: \"kind\" is missing"},
        {"a date without kind and id", "b.csv", bills(one_row + ",,2024-03-06,G2,箱,3,W1\n"),
         "b.csv:3:1: \"kind\" is missing"},
        {"a row of totals", "b.csv", bills(one_row + ",,,合计：,,2,\n"),
         "b.csv:3:4: \"合计：\": this looks like a row of totals; leave it out, or give its bill's id"},
        {"an English row of totals", "b.csv", bills(one_row + ",,, Grand total,,2,W1\n"),
         "b.csv:3:4: \" Grand total\": this looks like a row of totals; leave it out, or give its bill's id"},
        {"a row of totals without a word", "b.csv", bills(one_row + ",,,,,2,\n"),
         "b.csv:3:1: \"goods\" is missing\nb.csv:3:1: \"receiver\" is missing"},
    };
    check(shapes);
}

TEST_CASE("Values are read as spreadsheets write them, and an amount never changes by a guess") {
    const auto with_quantity = [](const std::string& quantity) {
        return bills("stock-in,R1,2024-03-05,G1,箱,\"" + quantity + "\",W1\n");
    };
    const auto with_date = [](const std::string& date) { return bills("stock-in,R1," + date + ",G1,箱,2,W1\n"); };
    const std::string semicolons = "b.csv: detected: values between semicolons";
    const Shape shapes[] = {
        {"thousands", "b.csv", with_quantity("1,234.5"), "R1 2024-03-05: G1 箱 1234.5"},
        {"full width", "b.csv", with_quantity("１２"), "R1 2024-03-05: G1 箱 12"},
        {"blanks", "b.csv", with_quantity(" 2 "), one_bill},
        {"a unit behind it", "b.csv", with_quantity("2箱"),
         "b.csv:2:29: quantity: there is more than a number: \"2箱\"; a unit has a column of its own"},
        {"an unclear comma", "b.csv", with_quantity("1,234"),
         "b.csv:2:29: quantity: the mark in \"1,234\" may begin decimals or part thousands; say --decimal point or "
         "--decimal comma"},
        {"decimals behind a comma", "b.csv", bills("", ';') + "stock-in;R1;5.3.2024;G1;箱;1,5;W1\n",
         "b.csv:2:27: quantity: a number is expected, not \"1,5\"; where a comma begins decimals, say --decimal comma",
         semicolons},
        {"decimals behind a comma, named",
         "b.csv",
         with_quantity("1,5"),
         "R1 2024-03-05: G1 箱 1.5",
         "",
         {.decimal = ','}},
        {"an unclear point between semicolons", "b.csv", bills("stock-in,R1,2024-03-05,G1,箱,1.234,W1\n", ';'),
         "b.csv:2:29: quantity: the mark in \"1.234\" may begin decimals or part thousands; say --decimal point or "
         "--decimal comma",
         semicolons},
        {"a point between commas is one of decimals", "b.csv", with_quantity("1.234"), "R1 2024-03-05: G1 箱 1.234"},
        {"a number with too many digits", "b.csv", with_quantity("1,234.56789"),
         "b.csv:2:29: quantity: \"1,234.56789\" would be kept as 1234.568"},
        {"a Chinese date", "b.csv", with_date("2024年3月5日"), one_bill},
        {"a date with points", "b.csv", with_date("5.3.2024"), one_bill},
        {"a serial number", "b.csv", with_date("45356"), one_bill},
        {"an unclear date", "b.csv", with_date("03/04/2024"),
         "b.csv:2:13: date: \"03/04/2024\" can be read in two ways; say --date-format dmy or --date-format mdy"},
        {"an unclear date, its order named",
         "b.csv",
         with_date("03/04/2024"),
         "R1 2024-04-03: G1 箱 2",
         "",
         {.date_order = DateOrder::day_first}},
        {"a date of two digits for the year", "b.csv", with_date("5.3.24"),
         "b.csv:2:13: date: a date like 2024-03-05 is expected, not \"5.3.24\""},
        {"a full-width digit for a whole number", "goods.csv", "id,main_goods\nG1,１\n", "G1 "},
        {"a whole number with text", "goods.csv", "id,main_goods\nG1,1箱\n",
         "goods.csv:2:4: main_goods: there is more than a number: \"1箱\"; a unit has a column of its own"},
    };
    check(shapes);
}

TEST_CASE("A file's encoding is known by its mark, its NULs or its characters, and never guessed in silence") {
    const std::string text = bills(one_row);
    const std::string goods = "id,name\r\nG1,手机屏幕总成原装黑色\r\nG2,电池后盖充电尾插\r\n";
    const std::string read_goods = "G1 手机屏幕总成原装黑色; G2 电池后盖充电尾插";
    // "id,name\r\nG1,手机屏幕总成原装黑色\r\nG2,电池后盖充电尾插\r\n" in GB18030
    const std::string in_gb =
        "id,name\r\nG1,"
        "\xCA\xD6\xBB\xFA\xC6\xC1\xC4\xBB\xD7\xDC\xB3\xC9\xD4\xAD\xD7\xB0\xBA\xDA\xC9\xAB\r\nG2,"
        "\xB5\xE7\xB3\xD8\xBA\xF3\xB8\xC7\xB3\xE4\xB5\xE7\xCE\xB2\xB2\xE5\r\n";
    // "id,name\nG1,手機螢幕總成原裝黑色電池後蓋\n" in Big5
    const std::string in_big5 =
        "id,name\nG1,"
        "\xA4\xE2\xBE\xF7\xBF\xC3\xB9\xF5\xC1\x60\xA6\xA8\xAD\xEC\xB8\xCB\xB6\xC2\xA6\xE2\xB9\x71"
        "\xA6\xC0\xAB\xE1\xBB\x5C\n";
    const Shape shapes[] = {
        {"UTF-8 with a mark", "b.csv", "\xEF\xBB\xBF" + text, one_bill},
        {"UTF-16 with a mark", "b.csv", "\xFF\xFE" + in_utf16(text, false), one_bill, "b.csv: detected: UTF-16LE"},
        {"UTF-16 of the other order with a mark", "b.csv", "\xFE\xFF" + in_utf16(text, true), one_bill,
         "b.csv: detected: UTF-16BE"},
        {"UTF-16 without a mark", "b.csv", in_utf16(text, false), one_bill, "b.csv: detected: UTF-16LE"},
        {"UTF-16 of the other order without a mark", "b.csv", in_utf16(text, true), one_bill,
         "b.csv: detected: UTF-16BE"},
        {"what spreadsheets call Unicode text", "b.txt", "\xFF\xFE" + in_utf16(bills(one_row, '\t'), false), one_bill,
         "b.txt: detected: UTF-16LE, values between tabs"},
        {"JSON in UTF-16", "b.json", "\xFF\xFE" + in_utf16("{\"goods\": [{\"id\": \"G1\", \"name\": \"屏\"}]}", false),
         "G1 屏", "b.json: detected: UTF-16LE"},
        {"half a pair in UTF-16", "goods.csv", "\xFF\xFE" + in_utf16("id,name\nG1,", false) + "\x00\xD8\x31\x00"_bytes,
         "goods.csv:2:4: the code unit 0xD800 is half a character", "goods.csv: detected: UTF-16LE"},
        {"UTF-16 that ends within a character", "goods.csv", "\xFF\xFE" + in_utf16("id,name\nG1,n", false) + "\x4B",
         "goods.csv:2:5: the byte 0x4B is no UTF-16LE", "goods.csv: detected: UTF-16LE"},
        {"GB18030 by its characters", "goods.csv", in_gb, read_goods,
         "goods.csv: detected: GB18030 (of 18 characters 100 % are in daily use there, in Big5 66 %)"},
        {"GB18030 by name", "goods.csv", in_gb, read_goods, "", {.encoding = Encoding::gb18030}},
        {"Big5 by its characters", "goods.csv", in_big5, "G1 手機螢幕總成原裝黑色電池後蓋",
         "goods.csv: detected: Big5 (of 14 characters 100 % are in daily use there, in GB18030 35 %)"},
        {"Big5 by name", "goods.csv", in_big5, "G1 手機螢幕總成原裝黑色電池後蓋", "", {.encoding = Encoding::big5}},
        {"too few characters to be certain", "goods.csv", "id,name\nG1,\xC6\xC1\xC4\xBB\n",
         "goods.csv:2:4: the byte 0xC6 is no UTF-8; for a file in GB18030, say --encoding gb18030"},
        {"a Western code page", "goods.csv", "id,name\nG1,caf\xE9, no\n",
         "goods.csv:2:7: the byte 0xE9 is no UTF-8; for a file in GB18030, say --encoding gb18030\n"
         "goods.csv:2:9: the row has 3 values for 2 columns"},
        {"UTF-8 that ends within a character", "goods.csv", "id,name\nG1,\xE5\xB1",
         "goods.csv:2:4: the byte 0xE5 is no UTF-8; for a file in GB18030, say --encoding gb18030"},
        {"a NUL in a text", "goods.csv", "id,name\nG1,a\0b\n"_bytes,
         "goods.csv:2:4: name: the text contains the character NUL"},
        {"4-byte characters of GB18030",
         "goods.csv",
         "id,name\nG1,\x95\x32\x82\x36\n",
         "G1 𠀀",
         "",
         {.encoding = Encoding::gb18030}},
    };
    check(shapes);
}

TEST_CASE("A big file in the wrong character set is refused in linear time, and told what it probably is") {
    std::string bytes = "id,name\n";
    for (int row = 0; row < 60'000; ++row)
        bytes += "G,\xCA\xD6\xBB\xFA\xC6\xC1\xC4\xBB\xD7\xDC\xB3\xC9\xD4\xAD\xD7\xB0\n";
    const auto start = std::chrono::steady_clock::now();
    const ReadFile lines = read("goods.csv", bytes, {.encoding = Encoding::utf8});
    const std::string probably =
        "goods.csv: the file is probably in GB18030 (of 480000 characters 100 % are in daily use there, in Big5 50 %); "
        "say --encoding gb18030";
    CHECK(lines.faults.ends_with(probably));
    std::ranges::replace(bytes, '\n', ' ');
    CHECK(!read("goods.csv", bytes, {.encoding = Encoding::utf8}).faults.empty());
    std::string noise;
    for (int row = 0; row < 200'000; ++row) noise += "\xFF\x80,\xFF\n";
    CHECK(read("goods.csv", noise, {.encoding = Encoding::gb18030})
              .faults.ends_with("the file is neither in UTF-8 nor in GB18030 nor in Big5; save it as UTF-8"));
    // Some tenths of a second where time is linear; a minute and more where it is quadratic.
    CHECK(std::chrono::steady_clock::now() - start < std::chrono::seconds(30));
}

/// A row of a sheet: numbers as numbers, what begins with `<` as it stands, all else as texts of their own.
std::string sheet_row(std::size_t number, const std::vector<std::string>& values) {
    std::string row = "<row r=\"" + std::to_string(number) + "\">";
    for (std::size_t column = 0; column < values.size(); ++column) {
        const std::string& value = values[column];
        const std::string place = " r=\"" + cell_name(number - 1, column) + "\"";
        if (value.empty()) continue;
        if (value.starts_with("<c")) {
            row += "<c" + place + value.substr(2);
        } else if (value.find_first_not_of("0123456789.") == std::string::npos) {
            row += "<c" + place + "><v>" + value + "</v></c>";
        } else {
            row += "<c" + place + " t=\"inlineStr\"><is><t>" + value + "</t></is></c>";
        }
    }
    return row + "</row>";
}

const std::string sheet_head =
    sheet_row(1, {"bill.kind", "bill.id", "bill.date", "goods", "unit", "quantity", "receiver"});

/// A workbook with the sheet `Bills`: a heading, and one line with these cells.
std::string bill_sheet(const std::string& date, const std::string& goods, const std::string& quantity,
                       const std::string& properties = {}) {
    return workbook_of(
        {{"Bills", sheet_head + sheet_row(2, {"stock-in", "R1", date, goods, "箱", quantity, "W1"}), "", ""}},
        "<si><t>G1</t></si><si><r><t>G</t></r><r><t xml:space=\"preserve\">1</t></r><rPh><t>x</t></rPh></si>",
        properties);
}

TEST_CASE("A workbook is read with its dates, shared texts and formulas' results") {
    const std::string date = "<c s=\"1\"><v>45356</v></c>";
    const std::string goods_sheet = sheet_row(1, {"id", "name"}) + sheet_row(2, {"G1", "屏幕"});
    const std::string bill_rows = sheet_head + sheet_row(2, {"stock-in", "R1", date, "G1", "箱", "2", "W1"});
    const Shape shapes[] = {
        {"texts and numbers", "b.xlsx", bill_sheet("2024-03-05", "G1", "2"), one_bill},
        {".XLSX in capitals", "B.XLSX", bill_sheet("2024-03-05", "G1", "2"), one_bill},
        {"a workbook under another name", "b.csv", bill_sheet("2024-03-05", "G1", "2"), one_bill,
         "b.csv: detected: an .xlsx workbook"},
        {"a date", "b.xlsx", bill_sheet(date, "G1", "2"), one_bill},
        {"a date with its time", "b.xlsx", bill_sheet("<c s=\"2\"><v>45356.5882986111</v></c>", "G1", "2"),
         "R1 2024-03-05 14:07:09: G1 箱 2"},
        {"a Chinese date", "b.xlsx", bill_sheet("<c s=\"3\"><v>45356</v></c>", "G1", "2"), one_bill},
        {"a date of 1904's count", "b.xlsx", bill_sheet("<c s=\"1\"><v>43894</v></c>", "G1", "2", " date1904=\"1\""),
         one_bill},
        {"a date in ISO 8601", "b.xlsx", bill_sheet("<c t=\"d\"><v>2024-03-05T00:00:00</v></c>", "G1", "2"), one_bill},
        {"a serial number without a format", "b.xlsx", bill_sheet("45356", "G1", "2"), one_bill},
        {"a serial number of 1904's count", "b.xlsx", bill_sheet("43894", "G1", "2", " date1904=\"true\""), one_bill},
        {"a date as text", "b.xlsx", bill_sheet("2024年3月5日", "G1", "2"), one_bill},
        {"a shared text", "b.xlsx", bill_sheet(date, "<c t=\"s\"><v>0</v></c>", "2"), one_bill},
        {"a shared text in pieces", "b.xlsx", bill_sheet(date, "<c t=\"s\"><v>1</v></c>", "2"), one_bill},
        {"a formula's text", "b.xlsx", bill_sheet(date, "<c t=\"str\"><f>A1&amp;\"1\"</f><v>G1</v></c>", "2"),
         one_bill},
        {"a formula's number", "b.xlsx", bill_sheet(date, "G1", "<c><f>1+1</f><v>2</v></c>"), one_bill},
        {"a formula's number with the noise of binary", "b.xlsx", bill_sheet(date, "G1", "0.30000000000000004"),
         "R1 2024-03-05: G1 箱 0.3"},
        {"a number with a format", "b.xlsx", bill_sheet(date, "G1", "<c s=\"4\"><v>1.234</v></c>"),
         "R1 2024-03-05: G1 箱 1.234"},
        {"a number is a number whatever the mark of decimals",
         "b.xlsx",
         bill_sheet(date, "G1", "1.234"),
         "R1 2024-03-05: G1 箱 1.234",
         "",
         {.decimal = ','}},
        {"an id that is a number", "b.xlsx", bill_sheet(date, "1001", "2"), "R1 2024-03-05: 1001 箱 2"},
        {"an escaped character", "b.xlsx", bill_sheet(date, "<c t=\"str\"><v>G_x0031__x005F_</v></c>", "2"),
         "R1 2024-03-05: G1_ 箱 2"},
        {"no place on rows and cells", "goods.xlsx",
         workbook_of({{"Sheet1",
                       "<row><c t=\"str\"><v>id</v></c><c t=\"str\"><v>name</v></c></row>"
                       "<row><c t=\"str\"><v>G1</v></c><c t=\"str\"><v>n</v></c></row>",
                       "", ""}}),
         "G1 n"},
        {"cells that are left out", "b.xlsx",
         workbook_of(
             {{"Bills", bill_rows + sheet_row(3, {"", "", "", "G2", "", "3", "W1"}) + sheet_row(9, {}), "", ""}}),
         "R1 2024-03-05: G1 箱 2, G2  3"},
        {"a header merged over its lines", "b.xlsx",
         workbook_of({{"Bills", bill_rows + sheet_row(3, {"", "", "", "G2", "箱", "3", "W1"}),
                       "<mergeCells><mergeCell ref=\"A2:A3\"/><mergeCell ref=\"B2:B3\"/></mergeCells>", ""}}),
         "R1 2024-03-05: G1 箱 2, G2 箱 3"},
        {"several sheets", "shop.xlsx",
         workbook_of({{"Goods", goods_sheet, "", ""},
                      {"三月", bill_rows, "", ""},
                      {"Notes", sheet_row(1, {"x"}), "", ""},
                      {"Empty", "", "", ""},
                      {"Old", bill_rows, "", "hidden"}}),
         "G1 屏幕; R1 2024-03-05: G1 箱 2", "shop.xlsx: detected: the sheets Goods, 三月, not Notes, Empty, Old"},
        {"a sheet by its name, though hidden",
         "shop.xlsx",
         workbook_of({{"Notes", sheet_row(1, {"x"}), "", ""}, {"Old", bill_rows, "", "hidden"}}),
         one_bill,
         "shop.xlsx: detected: the sheets Old, not Notes",
         {.sheet = "old"}},
        {"a sheet that is told its table",
         "shop.xlsx",
         workbook_of({{"Sheet1", goods_sheet, "", ""}}),
         "G1 屏幕",
         "",
         {.table = "goods"}},
    };
    check(shapes);
}

TEST_CASE("A workbook's faults are told with sheet and cell") {
    const std::string date = "<c s=\"1\"><v>45356</v></c>";
    const std::string bill_rows = sheet_head + sheet_row(2, {"stock-in", "R1", date, "G1", "箱", "2", "W1"});
    const Shape shapes[] = {
        {"an error", "b.xlsx", bill_sheet(date, "G1", "<c t=\"e\"><f>NA()</f><v>#N/A</v></c>"),
         "b.xlsx:Bills!F2: quantity: a number is expected, not #N/A"},
        {"an error in a text", "b.xlsx", bill_sheet(date, "<c t=\"e\"><v>#REF!</v></c>", "2"),
         "b.xlsx:Bills!D2: goods: a text is expected, not #REF!"},
        {"a truth value", "b.xlsx", bill_sheet(date, "G1", "<c t=\"b\"><v>1</v></c>"),
         "b.xlsx:Bills!F2: quantity: a number is expected, not TRUE"},
        {"a text with its unit", "b.xlsx", bill_sheet(date, "G1", "2箱"),
         "b.xlsx:Bills!F2: quantity: there is more than a number: \"2箱\"; a unit has a column of its own"},
        {"a date for a number", "b.xlsx", bill_sheet(date, "G1", "<c s=\"1\"><v>2</v></c>"),
         "b.xlsx:Bills!F2: quantity: a number is expected, not 1900-01-02"},
        {"a model that became a date", "b.xlsx", bill_sheet(date, "<c s=\"1\"><v>45356</v></c>", "2"),
         "b.xlsx:Bills!D2: goods: a text is expected, not 2024-03-05"},
        {"a number for a date", "b.xlsx", bill_sheet("7", "G1", "2"),
         "b.xlsx:Bills!C2: date: a date like 2024-03-05 is expected, not 7"},
        {"a code that lost its digits", "b.xlsx", bill_sheet(date, "6901234567890123", "2"),
         "b.xlsx:Bills!D2: goods: 6.90123456789012e+15 is kept as a number, of which a spreadsheet keeps 15 digits; "
         "format the cell as text and type it again"},
        {"a formula that was never calculated", "b.xlsx", bill_sheet(date, "G1", "<c><f>1+1</f></c>"),
         "b.xlsx:Bills!F2: a formula without its result; open the workbook in a spreadsheet and save it\n"
         "b.xlsx:Bills!A2: \"quantity\" is missing"},
        {"goods merged over two lines", "b.xlsx",
         workbook_of({{"Bills", bill_rows + sheet_row(3, {"", "", "", "", "箱", "3", "W1"}),
                       "<mergeCells><mergeCell ref=\"D2:D3\"/></mergeCells>", ""}}),
         "b.xlsx:Bills!D3: goods: of merged cells only the first has a value; unmerge them and fill in each"},
        {"an unknown column", "b.xlsx",
         workbook_of({{"Bills", sheet_row(1, {"bill.kind", "bill.id", "goods", "quantity", "colour"}), "", ""}}),
         "b.xlsx:Bills!E1: unknown column \"colour\""},
        {"a value far to the right", "b.xlsx",
         workbook_of({{"Bills", bill_rows + "<row r=\"3\"><c r=\"XFD3\"><v>1</v></c></row>", "", ""}}),
         "b.xlsx:Bills!XFD3: the table is too wide: no more than 1000 columns are read"},
        {"one bill twice", "b.xlsx",
         workbook_of({{"Bills",
                       bill_rows + sheet_row(3, {"stock-in", "R2", date, "G1", "箱", "2", "W1"}) +
                           sheet_row(4, {"stock-in", "R1", date, "G1", "箱", "2", "W1"}),
                       "", ""}}),
         "b.xlsx:Bills!B4: stock-in R1 is given twice; it stands at b.xlsx:Bills!B2 already"},
        {"two sheets with bills", "b.xlsx", workbook_of({{"A", bill_rows, "", ""}, {"B", bill_rows, "", ""}}),
         "b.xlsx: several sheets have bills: A, B; say one of them with --sheet"},
        {"a sheet that is not there",
         "b.xlsx",
         workbook_of({{"A", bill_rows, "", ""}, {"B", bill_rows, "", ""}}),
         "b.xlsx: there is no sheet \"C\"; there are A, B",
         "",
         {.sheet = "C"}},
        {"no sheet that says what it is", "b.xlsx",
         workbook_of({{"A", sheet_row(1, {"id"}), "", ""}, {"B", sheet_row(1, {"id"}), "", ""}}),
         "b.xlsx: no sheet has a column \"bill.kind\", and none is named after a table (warehouses, goods, units); "
         "there "
         "are A, B; say which with --sheet and --table"},
    };
    check(shapes);
}

/// The parts with one of them replaced, or left out if `content` is null.
std::string with_part(Parts parts, const std::string& name, const char* content) {
    std::erase_if(parts, [&](const auto& part) { return part.first == name; });
    if (content != nullptr) parts.emplace_back(name, content);
    return archive_of(parts);
}

TEST_CASE("A hostile, damaged or foreign workbook is refused and named as such") {
    const Parts good = parts_of({{"Bills", sheet_head, "", ""}});
    const std::string bytes = archive_of(good);
    const std::string sheet = "xl/worksheets/sheet1.xml";
    const auto with_sheet = [&](const std::string& xml) { return with_part(good, sheet, xml.c_str()); };
    std::string encrypted_container = "\xD0\xCF\x11\xE0";
    for (const char letter : std::string_view("EncryptedPackage")) encrypted_container += {letter, '\0'};
    const std::string damaged = "b.xlsx: the workbook is damaged: " + sheet + ": ";
    const Shape shapes[] = {
        {"no archive", "b.xlsx", "id,name\n", "b.xlsx: this is no .xlsx workbook, or a damaged one: Not a zip archive"},
        {"an empty file", "b.xlsx", "", "b.xlsx: this is no .xlsx workbook: it has no xl/_rels/workbook.xml.rels"},
        {"an archive cut short", "b.xlsx", bytes.substr(0, bytes.size() / 2),
         "b.xlsx: this is no .xlsx workbook, or a damaged one: Not a zip archive"},
        {"an archive of something else", "b.xlsx", archive_of({{"a.txt", "a"}}),
         "b.xlsx: this is no .xlsx workbook: it has no xl/_rels/workbook.xml.rels"},
        {"no sheet part", "b.xlsx", with_part(good, sheet, nullptr),
         "b.xlsx: this is no .xlsx workbook: it has no " + sheet},
        {"an OpenDocument sheet", "b.ods", archive_of({{"mimetype", "application/vnd.oasis.opendocument.spreadsheet"}}),
         "b.ods: this is an OpenDocument sheet (.ods); save it as .xlsx or .csv", "b.ods: detected: an .xlsx workbook"},
        {"a binary workbook", "b.xlsx", archive_of({{"xl/workbook.bin", "a"}}),
         "b.xlsx: this is a binary workbook (.xlsb); save it as .xlsx"},
        {"an old workbook", "b.xls", "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1",
         "b.xls: this is a workbook of the older kind (.xls) or one with a password; save it as .xlsx without a "
         "password"},
        {"an encrypted workbook", "b.xlsx", encrypted_container,
         "b.xlsx: the workbook has a password; save it without one"},
        {"an encrypted archive", "b.xlsx", archive_of(good, "secret"),
         "b.xlsx: the workbook has a password; save it without one"},
        {"entities", "b.xlsx",
         with_sheet("<!DOCTYPE a [<!ENTITY b \"bbbb\"><!ENTITY c \"&b;&b;&b;\">]><worksheet>&c;</worksheet>"),
         "b.xlsx: " + sheet + " has a document type declaration, which no workbook has; it is not read"},
        {"XML that ends early", "b.xlsx", with_sheet("<worksheet><sheetData>"), damaged + "no element found"},
        {"no XML", "b.xlsx", with_sheet("id,name"), damaged + "syntax error"},
        {"nesting without end", "b.xlsx", with_sheet([] {
             std::string xml;
             for (int depth = 0; depth < 100'000; ++depth) xml += "<a>";
             return xml;
         }()),
         damaged + "it is nested too deeply"},
        {"a tag without end", "b.xlsx", with_sheet("<worksheet a=\"" + std::string(3'000'000, 'a') + "\"/>"),
         damaged + "it has a tag of more than a million characters"},
        {"a bomb", "b.xlsx", with_sheet("<worksheet>" + std::string(100'000'000, ' ') + "</worksheet>"),
         "b.xlsx: the workbook is too big unpacked"},
        {"a column beyond all", "b.xlsx",
         with_sheet("<worksheet><row r=\"1\"><c r=\"XFE1\"><v>1</v></c></row></worksheet>"),
         damaged + "\"XFE1\" is no cell"},
        {"a million columns", "b.xlsx", with_sheet([] {
             std::string xml = "<worksheet><row>";
             for (int column = 0; column < 1'000'000; ++column) xml += "<c/>";
             return xml + "</row></worksheet>";
         }()),
         damaged + "cell is out of order"},
        {"rows out of order", "b.xlsx", with_sheet("<worksheet><row r=\"2\"/><row r=\"2\"/></worksheet>"),
         damaged + "2 is out of order"},
        {"a cell twice", "b.xlsx", with_sheet("<worksheet><row r=\"1\"><c r=\"A1\"/><c r=\"A1\"/></row></worksheet>"),
         damaged + "A1 is out of order"},
        {"a cell of another row", "b.xlsx", with_sheet("<worksheet><row r=\"1\"><c r=\"A2\"/></row></worksheet>"),
         damaged + "\"A2\" is no cell"},
        {"a shared text that is not there", "b.xlsx",
         with_sheet("<worksheet><row r=\"1\"><c r=\"A1\" t=\"s\"><v>99</v></c></row></worksheet>"),
         damaged + "there is no shared text 99"},
        {"a number that is none", "b.xlsx",
         with_sheet("<worksheet><row r=\"1\"><c r=\"A1\"><v>x</v></c></row></worksheet>"),
         damaged + "\"x\" is no number"},
    };
    for (const Shape& shape : shapes) {
        INFO(shape.name);
        const ReadFile found = read(shape.file, shape.bytes);
        CHECK(found.faults.substr(0, shape.shop.size()) == shape.shop);
    }
    std::string torn = bytes;
    torn[torn.find(sheet) + sheet.size() + 20] ^= 0x55;  // within the compressed rows
    CHECK(!read("b.xlsx", torn).faults.empty());
}

TEST_CASE("A number format is known as one of dates by its letters outside quotes and colours") {
    for (const char* const code :
         {"yyyy-mm-dd", "m/d/yy h:mm", "[$-804]yyyy\"年\"m\"月\"d\"日\";@", "[h]:mm", "mm:ss.0", "上午/下午h\"时\""}) {
        CAPTURE(code);
        CHECK(is_date_format(code));
    }
    for (const char* const code :
         {"General", "0.00", "[Red]0.00", "#,##0 \"days\"", "0.00E+00", "@", "0\\d", "_d0", "0;\"y\"", "¥#,##0"}) {
        CAPTURE(code);
        CHECK(!is_date_format(code));
    }
}

}  // namespace
}  // namespace vantlo::test
