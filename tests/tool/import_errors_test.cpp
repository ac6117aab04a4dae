#include <doctest/doctest.h>

#include <algorithm>
#include <span>
#include <string>

#include "tests/support/shell.h"

// Error messages of vantlo import, compared as a whole: file, line, column and reason.

namespace vantlo::test {
namespace {

/// Bytes with everything in them, NUL too.
std::string operator""_bytes(const char* text, std::size_t size) { return {text, size}; }

struct Row {
    const char* file;
    std::string content;
    std::string output;
    const char* options = "";
};

void check_refused(std::span<const Row> rows) {
    const Shell shell;
    shell.vantlo("init");
    for (const Row& row : rows) {
        INFO(row.content);
        shell.file(row.file, row.content);
        const Finished finished = shell.vantlo(std::string("import ") + row.options + " " + row.file);
        CHECK(finished.exit_code == 5);
        CHECK(finished.output == row.output);
    }
    const Finished ledger = shell.vantlo("ledger");
    CHECK(ledger.exit_code == 0);
    CHECK(!ledger.has("G1"));
}

/// A document with one bill of one line; quantities and the like replace the line's end.
std::string bill(const std::string& bill_fields, const std::string& line_fields) {
    return R"({"bills": [{"kind": "stock-in", "id": "B1")" + bill_fields + R"(, "lines": [)" + "\n" +
           R"({"goods": "G1", )" + line_fields + ", \"receiver\": \"W1\"}]}]}\n";
}

TEST_CASE("vantlo import names each fault of a JSON file with its place") {
    const Row rows[] = {
        // no JSON
        {"a.json", "",
         "a.json:1:1: this is no JSON: syntax error while parsing value - unexpected end of input; expected '[', '{', "
         "or a literal\n"},
        {"a.json", "{\"bills\": [}",
         "a.json:1:12: this is no JSON: syntax error while parsing value - unexpected '}'; expected '[', '{', or a "
         "literal\n"},
        {"a.json", "{\"bills\": [\n1 2]}",
         "a.json:2:1: an object is expected, not 1\n"
         "a.json:2:3: this is no JSON: syntax error while parsing array - unexpected number literal; expected ']'\n"},
        {"a.json", "{\"bills\": [,1]}",
         "a.json:1:12: this is no JSON: syntax error while parsing value - unexpected ','; expected '[', '{', or a "
         "literal\n"},
        {"a.json", "{\"bills\" []}",
         "a.json:1:10: this is no JSON: syntax error while parsing object separator - unexpected '['; expected ':'\n"},
        {"a.json", "{\"goods\": [{\"id\": \"G1",
         "a.json:1:19: this is no JSON: syntax error while parsing value - invalid string: missing closing quote\n"},
        {"a.json", "{\"goods\": [{\"id\": \"\xE7\xAE\xB1\", \"name\": \"\\ud800\"}]}",
         "a.json:1:32: this is no JSON: syntax error while parsing value - invalid string: surrogate U+D800..U+DBFF "
         "must be followed by U+DC00..U+DFFF\n"},
        {"a.json", "{\"goods\": [{\"id\": \"\\udc00\"}]}",
         "a.json:1:19: this is no JSON: syntax error while parsing value - invalid string: surrogate U+DC00..U+DFFF "
         "must follow U+D800..U+DBFF\n"},
        {"a.json", "{\"goods\": [{\"id\": \"G\t1\"}]}",
         "a.json:1:19: this is no JSON: syntax error while parsing value - invalid string: control character U+0009 "
         "(HT) must be escaped to \\u0009 or \\t\n"},
        {"a.json", bill("", "\"quantity\": 1e999"), "a.json:2:29: this is no JSON: number overflow parsing '1e999'\n"},
        {"a.json", bill("", "\"quantity\": 01"),
         "a.json:2:30: this is no JSON: syntax error while parsing object - unexpected number literal; expected '}'\n"},
        {"a.json", bill("", "\"quantity\": NaN"),
         "a.json:2:29: this is no JSON: syntax error while parsing value - invalid literal\n"},
        {"a.json", "{\"bills\": [[[[[[[[[[]]]]]]]]]]}", "a.json:1:18: this is nested too deeply\n"},
        {"a.json", bill("", "\"quantity\": 1") + "{}",
         "a.json:3:1: this is no JSON: syntax error while parsing value - unexpected '{'; expected end of input\n"},
        // other than the parts of a file
        {"a.json", "[]", "a.json:1:1: an object is expected, not a list\n"},
        {"a.json", "{\"bill\": []}", "a.json:1:2: unknown part \"bill\"\n"},
        {"a.json", "{\"bills\": {}}", "a.json:1:11: bills: a list is expected, not an object\n"},
        {"a.json", "{\"goods\": [7]}", "a.json:1:12: an object is expected, not 7\n"},
        {"a.json", "{\"goods\": [{\"id\": \"G1\", \"id\": \"G2\"}]}", "a.json:1:25: the field \"id\" is given twice\n"},
        // other than a bill
        {"a.json", "{\"bills\": [{\"id\": \"B1\"}]}", "a.json:1:12: \"kind\" is missing\n"},
        {"a.json", "{\"bills\": [{\"kind\": \"gift\", \"id\": \"B1\"}]}",
         "a.json:1:21: unknown kind of bill \"gift\"\n"},
        {"a.json", "{\"bills\": [{\"kind\": 7, \"id\": \"B1\"}]}", "a.json:1:21: unknown kind of bill 7\n"},
        {"a.json", "{\"bills\": [{\"kind\": \"loss\"}]}", "a.json:1:12: \"id\" is missing\n"},
        {"a.json", "{\"bills\": [{\"kind\": \"loss\", \"id\": \"  \"}]}", "a.json:1:35: \"id\" is empty\n"},
        {"a.json", "{\"bills\": [{\"kind\": \"loss\", \"id\": 17}]}", "a.json:1:35: id: a text is expected, not 17\n"},
        {"a.json", "{\"bills\": [{\"kind\": \"loss\", \"id\": \"B1\"}]}", "a.json:1:12: \"lines\" is missing\n"},
        {"a.json", "{\"bills\": [{\"kind\": \"loss\", \"id\": \"B1\", \"lines\": null}]}",
         "a.json:1:50: lines: a list is expected, not null\n"},
        {"a.json", "{\"bills\": [{\"kind\": \"loss\", \"id\": \"B1\", \"lines\": []}]}",
         "a.json:1:50: the bill has no lines\n"},
        {"a.json", "{\"bills\": [{\"kind\": \"loss\", \"id\": \"B1\", \"lines\": [\"G1\"]}]}",
         "a.json:1:51: an object is expected, not \"G1\"\n"},
        {"a.json", bill(", \"colour\": \"red\"", "\"quantity\": 1"), "a.json:1:45: unknown field \"colour\"\n"},
        {"a.json", bill(", \"date\": \"2024-02-30\"", "\"quantity\": 1"),
         "a.json:1:53: date: a date like 2024-03-05 is expected, not \"2024-02-30\"\n"},
        {"a.json", bill(", \"date\": \"12:30\"", "\"quantity\": 1"),
         "a.json:1:53: date: a date like 2024-03-05 is expected, not \"12:30\"\n"},
        {"a.json", bill(", \"date\": \"1899-12-30\"", "\"quantity\": 1"),
         "a.json:1:53: date: \"1899-12-30\" would be kept as no date\n"},
        {"a.json", bill(", \"date\": 20240305", "\"quantity\": 1"),
         "a.json:1:53: date: a date like 2024-03-05 is expected, not 20240305\n"},
        {"a.json", bill(", \"status\": 32768", "\"quantity\": 1"),
         "a.json:1:55: status: 32768 is outside -32768 to 32767\n"},
        {"a.json", bill(", \"status\": 1.5", "\"quantity\": 1"),
         "a.json:1:55: status: a whole number is expected, not 1.5\n"},
        // other than a line
        {"a.json", bill("", "\"unit\": \"\xE7\xAE\xB1\", \"colour\": \"red\", \"quantity\": 1"),
         "a.json:2:30: unknown field \"colour\"\n"},
        {"a.json", bill("", "\"unit\": \"\xE7\xAE\xB1\""), "a.json:2:1: \"quantity\" is missing\n"},
        {"a.json", bill("", "\"quantity\": \"2\""), "a.json:2:29: quantity: a number is expected, not \"2\"\n"},
        {"a.json", bill("", "\"quantity\": true"), "a.json:2:29: quantity: a number is expected, not true\n"},
        {"a.json", bill("", "\"quantity\": 1e39"), "a.json:2:29: quantity: 1e39 is too large\n"},
        {"a.json", bill("", "\"quantity\": 16777217"),
         "a.json:2:29: quantity: 16777217 would be kept as 1.677722E+07\n"},
        {"a.json", bill("", "\"quantity\": 1, \"status\": 2147483648"),
         "a.json:2:42: status: 2147483648 is outside -2147483648 to 2147483647\n"},
        {"a.json", bill("", "\"quantity\": 1, \"status\": false"),
         "a.json:2:42: status: a whole number is expected, not false\n"},
        {"a.json", bill("", "\"quantity\": 1, \"model1\": 7"), "a.json:2:42: model1: a text is expected, not 7\n"},
        {"a.json", bill("", "\"quantity\": 1, \"model1\": \"a\\u0000b\""),
         "a.json:2:42: model1: the text contains the character NUL\n"},
        {"a.json", bill("", "\"quantity\": 1, \"class\": \"" + std::string(41, 'x') + "\""),
         "a.json:2:41: class: 41 characters, where only 40 are kept: "
         "\"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx...\"\n"},
        {"a.json", bill("", "\"quantity\": 1, \"goods\": \"G2\""), "a.json:2:32: the field \"goods\" is given twice\n"},
        // a warehouse that is posted to and missing, and fields that are not read
        {"a.json",
         "{\"bills\": [{\"kind\": \"stock-in\", \"id\": \"B1\", \"lines\": [{\"goods\": \"G1\", \"quantity\": 1}]}]}",
         "a.json:1:55: \"receiver\" is missing\n"},
        {"a.json",
         "{\"bills\": [{\"kind\": \"stock\", \"id\": \"B1\", \"status\": 2, \"remarks\": \"r\", \"lines\": ["
         "{\"goods\": \"G1\", \"quantity\": 1, \"receiver\": \"W1\", \"supplier\": \" \", \"status\": 1}]}]}",
         "a.json:1:42: \"status\": a stock does not read this field; leave it out\n"
         "a.json:1:142: \"supplier\" is empty\n"
         "a.json:1:147: \"status\": a stock does not read this field; leave it out\n"},
        {"a.json", bill("", "\"quantity\": 1, \"supplier\": \"W2\""),
         "a.json:2:32: \"supplier\": a stock-in does not read this field; leave it out\n"},
        // twice, and all at once
        {"a.json", "{\"goods\": [{\"id\": \"G1\"},\n {\"id\": \" G1 \"}]}",
         "a.json:2:2: goods G1 is given twice; it stands at a.json:1:12 already\n"},
        {"a.json", "{\"units\": [{\"goods\": \"G1\"}]}", "a.json:1:12: \"unit\" is missing\n"},
        {"a.json",
         "{\"goods\": [{\"id\": 1}, {\"name\": \"n\"}, {\"id\": \"G1\", \"main_goods\": 70000}], \"other\": 1}",
         "a.json:1:19: id: a text is expected, not 1\n"
         "a.json:1:23: \"id\" is missing\n"
         "a.json:1:65: main_goods: 70000 is outside -32768 to 32767\n"
         "a.json:1:74: unknown part \"other\"\n"},
    };
    check_refused(rows);
}

TEST_CASE("vantlo import names each fault of a CSV file with its place") {
    constexpr const char* head = "bill.kind,bill.id,bill.date,goods,unit,quantity,receiver\n";
    const auto rows_of = [&](const std::string& rows) { return head + rows; };
    const auto losses_of = [](const std::string& rows) {
        return "bill.kind,bill.id,bill.date,goods,unit,quantity,supplier\n" + rows;
    };
    const Row rows[] = {
        // quoting and rows
        {"b.csv", rows_of("stock-in,B1,2024-03-05,\"G1,box,1,W1\n"), "b.csv:2:24: the closing quote is missing\n"},
        {"b.csv", rows_of("stock-in,B1,2024-03-05,G\"1\",box,1,W1\n"),
         "b.csv:2:25: a quote inside a value that is not quoted\n"},
        {"b.csv", rows_of("stock-in,B1,2024-03-05,\"G1\"x,box,1,W1\n"), "b.csv:2:28: text after the closing quote\n"},
        {"b.csv", rows_of("stock-in,B1,2024-03-05,G1,box,1,W1\rstock-in,"),
         "b.csv:2:35: a carriage return alone ends no line\n"},
        {"b.csv", rows_of("stock-in,B1,2024-03-05,G1,box,1\n"), "b.csv:2:1: the row has 6 values for 7 columns\n"},
        {"b.csv", rows_of("stock-in,B1,2024-03-05,G1,box,1,W1,W2\n"),
         "b.csv:2:36: the row has 8 values for 7 columns\n"},
        // columns
        {"b.csv", "bill.kind,bill.id,goods,quantity,colour\n", "b.csv:1:34: unknown column \"colour\"\n"},
        {"b.csv", "bill.kind,bill.id,goods,quantity,goods\n", "b.csv:1:34: the column \"goods\" is given twice\n"},
        {"b.csv", "bill.kind,goods\n",
         "b.csv:1:1: the column \"bill.id\" is missing\n"
         "b.csv:1:1: the column \"quantity\" is missing\n"},
        {"b.csv", "goods,unit,factor\n",
         "b.csv:1:1: columns \"bill.kind\" and \"bill.id\" are expected, or a file named after its table (warehouses, "
         "goods, units), or --table; \"b\" is no table\n"},
        {"goods.csv", "name\n", "goods.csv:1:1: the column \"id\" is missing\n"},
        {"goods.csv", "id,name\n,n\n", "goods.csv:2:1: \"id\" is missing\n"},
        {"more.csv", "id,name,factor\n", "more.csv:1:9: unknown column \"factor\"\n", "--table goods"},
        // cells
        {"b.csv", rows_of("gift,B1,2024-03-05,G1,box,1,W1\n"), "b.csv:2:1: unknown kind of bill \"gift\"\n"},
        {"b.csv", rows_of("stock-in,,2024-03-05,G1,box,1,W1\n"), "b.csv:2:1: \"id\" is missing\n"},
        {"b.csv", rows_of("stock-in,B1,5.3.24,G1,box,1,W1\n"),
         "b.csv:2:13: date: a date like 2024-03-05 is expected, not \"5.3.24\"\n"},
        {"b.csv", rows_of("stock-in,B1,2024-03-05,G1,box,\"1,5\",W1\n"),
         "b.csv:2:31: quantity: a number is expected, not \"1,5\"; where a comma begins decimals, say --decimal "
         "comma\n"},
        {"b.csv", rows_of("stock-in,B1,2024-03-05,G1,box,1 2,W1\n"),
         "b.csv:2:31: quantity: a number is expected, not \"1 2\"\n"},
        {"b.csv", rows_of("stock-in,B1,2024-03-05,G1,box,inf,W1\n"),
         "b.csv:2:31: quantity: a number is expected, not \"inf\"\n"},
        {"b.csv", rows_of("stock-in,B1,2024-03-05,G1,box,,W1\n"), "b.csv:2:1: \"quantity\" is missing\n"},
        {"b.csv", rows_of("repair-in,B1,2024-03-05,G1,box,1,W1\n"),
         "b.csv:2:34: unknown field \"receiver\"\n"
         "b.csv:2:1: \"warehouse\" is missing\n"},
        {"b.csv", rows_of("stock-in,B1,2024-03-05,G1,box,1,\n"), "b.csv:2:1: \"receiver\" is missing\n"},
        {"b.csv", rows_of("loss,B1,2024-03-05,G1,box,1,W1\n"),
         "b.csv:2:29: \"receiver\": a loss does not read this field; leave it out\n"
         "b.csv:2:1: \"supplier\" is missing\n"},
        {"b.csv", "bill.kind,bill.id,bill.receiver,goods,quantity\ntransfer,B1,W1,G1,1\n",
         "b.csv:2:1: \"supplier\" is missing\n"},
        {"b.csv", rows_of("stock-in,B1,2024-03-05,G1,box,1,W1\nstock-in,B1,2024-03-06,G1,box,1,W1\n"),
         "b.csv:3:13: bill.date: \"2024-03-06\" differs from \"2024-03-05\" in the bill's first row\n"},
        {"b.csv", losses_of("loss,B1,,G1,box,1,W1\nloss,B2,,G1,box,1,W1\nloss,B1,,G1,box,1,W1\n"),
         "b.csv:4:6: loss B1 is given twice; it stands at b.csv:2:6 already\n"},
        {"b.csv", losses_of("loss,B1,,G1,box,1,W1\nstock-out,B1,,G1,box,1,W1\n"),
         "b.csv:3:11: the id B1, which a loss and a stock-out cannot both have, is given twice; it stands at b.csv:2:6 "
         "already\n"},
        {"b.csv", losses_of("loss,B1,,\"G\n1\",box,x,W1\r\nloss,B2,,G1,box,y,W1\n"),
         "b.csv:2:10: goods: the text contains a line break or another control character\n"
         "b.csv:3:8: quantity: a number is expected, not \"x\"\n"
         "b.csv:4:17: quantity: a number is expected, not \"y\"\n"},
        // bytes
        {"b.csv", losses_of("loss,B1,,G\0001,box,1,W1\n"_bytes),
         "b.csv:2:10: goods: the text contains the character NUL\n"},
        {"b.csv", losses_of("loss,B1,,G1,\xCF\xE4,1,W1\n"),
         "b.csv:2:13: the byte 0xCF is no UTF-8; for a file in GB18030, say --encoding gb18030\n"},
        {"b.csv", losses_of("loss,B1,,G1,\xED\xA0\x80,1,W1\n"),
         "b.csv:2:13: the byte 0xED is no UTF-8; for a file in GB18030, say --encoding gb18030\n"},
        {"b.csv", losses_of("loss,B1,,G1,\xC0\xAF,1,W1\n"),
         "b.csv:2:13: the byte 0xC0 is no UTF-8; for a file in GB18030, say --encoding gb18030\n"},
        {"b.csv", "\xEF\xBB\xBF" + losses_of("loss,B1,,G1,\xE7\xAE\xB1,x,W1\n"),
         "b.csv:2:15: quantity: a number is expected, not \"x\"\n"},
        {"b.csv", losses_of("loss,B1,,G1,\xCF\xE4,x,W1\n"), "b.csv:2:15: quantity: a number is expected, not \"x\"\n",
         "--encoding gb18030"},
        {"b.csv", losses_of("loss,B1,,G1,\xCF\xFF,1,W1\n"), "b.csv:2:13: the byte 0xCF is no GB18030\n",
         "--encoding gb18030"},
        {"b.csv", losses_of("loss,B1,,G1,box,1,W\x81"), "b.csv:2:20: the byte 0x81 is no GB18030\n",
         "--encoding gb18030"},
        {"b.csv", "\xFF\xFEk\0i\0\0\xD8"_bytes,
         "b.csv: detected: UTF-16LE\n"
         "b.csv:1:3: the code unit 0xD800 is half a character\n"
         "b.csv:1:1: columns \"bill.kind\" and \"bill.id\" are expected, or a file named after its table (warehouses, "
         "goods, units), or --table; \"b\" is no table\n"},
    };
    check_refused(rows);
}

TEST_CASE("vantlo import names each fault of a JSON Lines file with its place, and goes on with the next line") {
    const Row rows[] = {
        {"c.jsonl",
         "{\"table\": \"goods\", \"id\": \"G1\"}\n{\"table\": \"goods\", \"id\": }\n\n{\"table\": \"goods\"}\n[]\n",
         "c.jsonl:2:26: this is no JSON: syntax error while parsing value - unexpected '}'; expected '[', '{', or a "
         "literal\n"
         "c.jsonl:4:1: \"id\" is missing\n"
         "c.jsonl:5:1: an object is expected, not a list\n"},
        {"c.jsonl", "{\"table\": \"stock\", \"id\": \"G1\"}", "c.jsonl:1:11: unknown table \"stock\"\n"},
        {"c.jsonl", "{\"table\": 7, \"id\": \"G1\"}", "c.jsonl:1:11: unknown table 7\n"},
        {"c.jsonl",
         "{\"kind\": \"loss\", \"id\": \"B1\", \"lines\": [{\"goods\": \"\", \"quantity\": 1, \"supplier\": "
         "\"W1\"}]}\n",
         "c.jsonl:1:50: \"goods\" is empty\n"},
        {"c.jsonl", "{\"table\": \"goods\", \"id\": \"G1\"} {}\n",
         "c.jsonl:1:32: this is no JSON: syntax error while parsing value - unexpected '{'; expected end of input\n"},
        {"c.jsonl", "{\"kind\": \"loss\",\n \"id\": \"B1\"}\n",
         "c.jsonl:1:17: this is no JSON: syntax error while parsing object key - unexpected end of input; expected "
         "string literal\n"
         "c.jsonl:2:6: this is no JSON: syntax error while parsing value - unexpected ':'; expected end of input\n"},
    };
    check_refused(rows);
}

TEST_CASE("vantlo import and save name faults in the user's language") {
    struct Fault {
        const char* file;
        std::string content;
        const char* output;
    };
    const Fault faults[] = {
        {"a.json", bill("", "\"quantity\": \"一\""), "a.json:2:29: quantity：应为数字，而不是“一”\n"},
        {"a.json", bill("", "\"quantity\": {}"), "a.json:2:29: quantity：应为数字，而不是对象\n"},
        {"a.json", "{\"lines\": []}", "a.json:1:2: 没有“lines”这一部分\n"},
        {"a.json", "{",
         "a.json:1:2: 这不是 JSON：syntax error while parsing object key - unexpected end of input; expected string "
         "literal\n"},
        {"a.csv", "bill.kind,bill.id,goods,quantity\nloss,B1,G1\n", "a.csv:2:1: 此行有 3 个值，但共有 4 列\n"},
        {"a.json", "{\"goods\": [{\"id\": \"G1\"}, {\"id\": \"G1\"}]}",
         "a.json:1:26: goods G1 出现了两次；前一次在 a.json:1:12\n"},
        {"a.csv", "\xFF\xFEi\0d\0=\0"_bytes,
         "a.csv: 已识别：UTF-16LE 编码\n"
         "a.csv:1:1: 应有“bill.kind”和“bill.id”两列，或文件以其数据表命名（warehouses、goods、units），或使用 --table；"
         "没有数据表“a”\n"},
    };
    const Shell shell;
    shell.vantlo("init");
    for (const Fault& fault : faults) {
        shell.file(fault.file, fault.content);
        for (const std::string command : {"import", "save"}) {
            const Finished finished = shell.vantlo("--lang zh " + command + " " + fault.file);
            CHECK(finished.exit_code == 5);
            CHECK(finished.output == fault.output);
        }
    }
    CHECK(shell.vantlo("--lang zh import missing.json").output == "missing.json: 无法读取此文件\n");
}

TEST_CASE("vantlo import tells the first hundred faults and counts the others") {
    const Shell shell;
    shell.vantlo("init");
    std::string rows = "id,colour\n";
    for (int row = 0; row < 250; ++row) rows += "\n,x";
    shell.file("goods.csv", rows);
    const Finished finished = shell.vantlo("import goods.csv missing.json");
    CHECK(finished.exit_code == 5);
    CHECK(std::ranges::count(finished.output, '\n') == 101);
    CHECK(finished.has("goods.csv:1:4: unknown column \"colour\"\n"));
    CHECK(finished.has("\n... and 152 more errors\n"));
}

}  // namespace
}  // namespace vantlo::test
