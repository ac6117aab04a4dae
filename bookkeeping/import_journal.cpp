#include "bookkeeping/import_journal.h"

#include <fmt/ranges.h>
#include <nettle/sha2.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <span>
#include <unordered_map>

#include "automation/text_value.h"
#include "bookkeeping/bill_history.h"
#include "bookkeeping/stored_bill.h"
#include "dataaccess/sql_literals.h"

namespace vantlo {

namespace {

/// Contents of bills by key_of.
using Contents = std::unordered_map<Text, Text>;

Text key_of(TextView kind, TextView id) { return Text(kind) + u"\n" + Text(id); }

/// Kinds of bills by id.
using Kinds = std::unordered_map<Text, Text>;

/// The bills of one table that are among `ids`, a list of literals.
Kinds stored_kinds(NativeConnection& database, const BillTable& table, const Text& ids) {
    Kinds found;
    const Text id = table.id_column;
    const Text look_up = u"select " + id + u",Kind from " + table.name + u" where " + id + u" in (" + ids + u")";
    for (const auto& row : database.run(look_up).rows) {
        found.emplace(to_text(row[0]), text_or_empty(row[1]));
    }
    return found;
}

/// The contents of the bills in the journal that have one of the ids.
Contents posted_contents(NativeConnection& database, const Text& ids) {
    Contents found;
    // Line 1 stands for all lines of a bill, which were entered in one transaction.
    const Text look_up = u"select Kind,BillId,Content from PostingJournal where BillId in (" + ids + u") and ItemNo<=1";
    for (const auto& row : database.run(look_up).rows) {
        found.emplace(key_of(to_text(row[0]), to_text(row[1])), to_text(row[2]));
    }
    return found;
}

std::string value_text(const Variant& value) {
    if (value.is<Null>()) return "null";
    if (const Text* const text = value.get_if<Text>()) {
        const std::string bytes = to_utf8(*text);
        return fmt::format("{}:{}", bytes.size(), bytes);
    }
    std::array<char, 32> digits{};
    const auto written = std::to_chars(digits.begin(), digits.end(), to_double(value));
    return {digits.begin(), written.ptr};
}

std::string fields_text(const Record& record) {
    std::map<std::string, std::string> values;
    for (const Record::Field& field : record.fields()) values[to_utf8(field.column)] = value_text(field.value);
    std::string text;
    for (const auto& [column, value] : values) text += column + "=" + value + "\n";
    return text;
}

/// In hexadecimal digits.
std::string sha256(const std::string& text) {
    sha256_ctx context{};
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
    sha256_init(&context);
    sha256_update(&context, text.size(), reinterpret_cast<const std::uint8_t*>(text.data()));
    sha256_digest(&context, digest.size(), digest.data());
    return fmt::format("{:02x}", fmt::join(digest, ""));
}

/// What imports wrote before there was content_digest.
Text digest_of_json(const Bill& bill) {
    std::uint64_t digest = 0xCBF29CE484222325;  // FNV-1a: these are its offset and prime
    for (const char16_t unit : bill_content(bill)) digest = (digest ^ unit) * 0x100000001B3;
    return from_utf8(fmt::format("{:016x}", digest));
}

BillState state_of(NativeConnection& database, const Bill& bill, const Kinds& stored, const Contents& contents) {
    const Text id(trim_blanks(bill.id));
    const Text kind = from_utf8(bill.kind->name);
    const auto content = contents.find(key_of(kind, id));
    const auto stored_kind = stored.find(id);
    if (stored_kind == stored.end()) return content == contents.end() ? BillState::absent : BillState::lost;
    if (stored_kind->second != kind) return BillState::other_kind;
    if (content != contents.end())
        return is_content_of(content->second, bill) ? BillState::imported : BillState::imported_otherwise;
    const std::optional<Bill> before = stored_bill(database, *bill.kind, id);
    return before && is_stored_as(*before, bill) ? BillState::stored : BillState::stored_otherwise;
}

}  // namespace

std::string content_text(const Bill& bill) {
    std::string text = "1\nheader\n" + fields_text(bill.header);
    for (const Record& line : bill.lines) text += "line\n" + fields_text(line);
    return text;
}

Text content_digest(const Bill& bill) { return from_utf8("sha256-1:" + sha256(content_text(bill))); }

bool is_content_of(TextView content, const Bill& bill) {
    return content == (content.size() == 16 ? digest_of_json(bill) : content_digest(bill));
}

std::vector<BillState> states_of(NativeConnection& database, const std::vector<Bill>& bills) {
    constexpr std::size_t bills_a_statement = 200;
    std::vector<BillState> states(bills.size(), BillState::absent);
    std::map<const BillTable*, std::vector<std::size_t>> by_table;
    for (std::size_t index = 0; index < bills.size(); ++index) by_table[bills[index].kind->header].push_back(index);
    for (const auto& [table, indexes] : by_table) {
        for (std::span<const std::size_t> left = indexes; !left.empty();) {
            const auto chunk = left.first(std::min(left.size(), bills_a_statement));
            left = left.subspan(chunk.size());
            Text ids;
            for (const std::size_t index : chunk) {
                if (!ids.empty()) ids += u',';
                ids += GetSqlVal(bills[index].id);
            }
            const Kinds stored = stored_kinds(database, *table, ids);
            const Contents contents = posted_contents(database, ids);
            for (const std::size_t index : chunk) states[index] = state_of(database, bills[index], stored, contents);
        }
    }
    return states;
}

}  // namespace vantlo
