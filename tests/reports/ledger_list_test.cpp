#include "reports/ledger_list.h"

#include <doctest/doctest.h>

namespace vantlo {
namespace {

TEST_CASE("status_cell makes a number of a status, and keeps as text what is none") {
    CHECK(status_cell(u"").is<Null>());
    CHECK(status_cell(u"2") == Variant(std::int32_t{2}));
    CHECK(status_cell(u"0") == Variant(std::int32_t{0}));
    for (const Text status : {u"new", u"99999999999", u"007", u"-1", u"1.5"})
        CHECK_MESSAGE(status_cell(status) == Variant(status), to_utf8(status));
}

}  // namespace
}  // namespace vantlo
