#include "dataaccess/unit_conversion.h"

#include "automation/error.h"
#include "dataaccess/recordsets.h"
#include "dataaccess/sql_literals.h"
#include "dataaccess/trap.h"

namespace vantlo {

namespace {

// The text of a look-up: for GoodsUnitConverter, which writes it, and recognize_unit_lookup.
constexpr TextView lookup_head = u"select id,Unit,UnitConverter from GoodsUnit where id=";
constexpr TextView lookup_middle = u" and Unit=";

/// Takes a text's literal off the front of a statement. Returns the text; nothing if none is there.
std::optional<Text> take_text_literal(TextView& statement) {
    if (!statement.starts_with(u'\'')) return std::nullopt;
    Text text;
    for (std::size_t i = 1; i < statement.size(); ++i) {
        const bool is_quote = statement[i] == u'\'';
        if (is_quote && statement.substr(i + 1, 1) != u"'") {
            statement.remove_prefix(i + 1);
            return text;
        }
        text += statement[i];
        if (is_quote) ++i;
    }
    return std::nullopt;
}

}  // namespace

std::optional<UnitLookup> recognize_unit_lookup(TextView statement) {
    if (!statement.starts_with(lookup_head)) return std::nullopt;
    statement.remove_prefix(lookup_head.size());
    std::optional<Text> gid = take_text_literal(statement);
    if (!gid || !statement.starts_with(lookup_middle)) return std::nullopt;
    statement.remove_prefix(lookup_middle.size());
    std::optional<Text> unit = take_text_literal(statement);
    if (!unit || !statement.empty()) return std::nullopt;
    return UnitLookup{std::move(*gid), std::move(*unit)};
}

inline namespace GetValue_Function {

namespace {

constexpr Currency no_conversion = Currency::from_whole(1);
constexpr std::size_t usual_length = 128;  // of the statement

Currency factor_in(Recordset& rows) {
    if (rows.eof()) return no_conversion;
    const Variant stored = rows.field(u"UnitConverter");
    if (stored.is<Null>()) return no_conversion;
    const Currency factor = to_currency(stored);
    return factor == Currency() ? no_conversion : factor;
}

}  // namespace

Currency GoodsUnitConverter(const Text& gid, const Text& unit) {
    Currency factor;
    RecordsetVariable rows;  // outside the trap: released after a failure has been shown
    const ErrorNumber failure = run_helper(u"GoodsUnitConverter", [&] {
        Open_Recordset(rows);
        Text source;
        source.reserve(usual_length);
        source += lookup_head;
        source += GetSqlVal(gid);
        source += lookup_middle;
        source += GetSqlVal(unit);
        require_set(rows).open(source);
        factor = factor_in(*rows);
    });
    return failure == 0 ? factor : Currency::from_whole(failure);
}

}  // namespace GetValue_Function
}  // namespace vantlo
