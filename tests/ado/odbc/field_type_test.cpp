#include "ado/odbc/field_type.h"

#include <doctest/doctest.h>
#include <sql.h>

#include "tests/support/printing.h"

namespace vantlo::test {
namespace {

TEST_CASE("exact_number makes a Currency of what fits four decimals, and keeps the digits of everything else") {
    struct Row {
        const char* digits;
        Variant value;
    };
    const Row rows[] = {
        {"0", Currency()},
        {"24.5000", Currency::from_ten_thousandths(245000)},
        {"-.5", Currency::from_ten_thousandths(-5000)},
        {"0.33330000", Currency::from_ten_thousandths(3333)},
        {"922337203685477.5807", Currency::from_ten_thousandths(INT64_MAX)},
        {"-922337203685477.5808", Currency::from_ten_thousandths(INT64_MIN)},
        {"922337203685477.5808", Other{u"922337203685477.5808"}},
        {"0.00001", Other{u"0.00001"}},
        {"-0.33333", Other{u"-0.33333"}},
        {"1000000000000000000000", Other{u"1000000000000000000000"}},
    };
    for (const Row& row : rows) {
        INFO(row.digits);
        CHECK(exact_number(row.digits) == row.value);
    }
}

TEST_CASE("field_type needs the engine's name for texts alone") {
    CHECK_FALSE(needs_type_name(SQL_INTEGER));
    CHECK_FALSE(needs_type_name(SQL_NUMERIC));
    CHECK(needs_type_name(SQL_VARCHAR));
    CHECK(field_type(SQL_VARCHAR, "varchar") == FieldType::text);
    CHECK(field_type(SQL_VARCHAR, "bool") == FieldType::boolean);
    CHECK(field_type(SQL_NUMERIC, "") == FieldType::exact);
}

}  // namespace
}  // namespace vantlo::test
