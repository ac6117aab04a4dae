#include <doctest/doctest.h>

#include "tests/com/component_library.h"

// Run where there is no display to show a box on.

namespace vantlo::test {
namespace {

DWORD milliseconds_of_a_failing_call(const ComponentLibrary& library) {
    const ComPointer<_Inventory_Class> object = library.make_object();
    OwnedBstr id(u"B1");
    LONG result = 0;
    const DWORD before = GetTickCount();
    CHECK(object->SaleIn_ReduceInventory(id.out(), &result) == S_OK);
    CHECK(result != 0);
    return GetTickCount() - before;
}

TEST_CASE("Without a display a failing call returns within a second") {
    const Apartment apartment;
    const ComponentLibrary library;
    library.show_messages_in_window();
    CHECK(milliseconds_of_a_failing_call(library) < 1000);
    library.show_messages_on_stderr();
    CHECK(milliseconds_of_a_failing_call(library) < 1000);
}

}  // namespace
}  // namespace vantlo::test
