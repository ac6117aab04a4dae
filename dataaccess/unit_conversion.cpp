#include "dataaccess/unit_conversion.h"

#include "automation/error.h"
#include "dataaccess/recordsets.h"
#include "dataaccess/sql_literals.h"
#include "dataaccess/trap.h"

namespace vantlo {
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
        source += u"select id,Unit,UnitConverter from GoodsUnit where id=";
        source += GetSqlVal(gid);
        source += u" and Unit=";
        source += GetSqlVal(unit);
        require_set(rows).open(source);
        factor = factor_in(*rows);
    });
    return failure == 0 ? factor : Currency::from_whole(failure);
}

}  // namespace GetValue_Function
}  // namespace vantlo
