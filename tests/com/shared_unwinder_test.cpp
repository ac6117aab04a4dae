#include <doctest/doctest.h>

#include <string>

#include "tests/com/component_library.h"
#include "tests/support/com/script_host.h"

// A process that has the compiler's shared unwinder, since another library of it was linked with that.

namespace vantlo::test {
namespace {

void load(const std::string& file) {
    const Text path = windows_path(file);
    REQUIRE(LoadLibraryW(std::wstring(path.begin(), path.end()).c_str()) != nullptr);
}

TEST_CASE("A posting can fail a thousand times beside the compiler's shared unwinder") {
    load(VANTLO_SHARED_THREADS);  // which the other one needs
    load(VANTLO_SHARED_UNWINDER);
    const Apartment apartment;
    const ComponentLibrary library;
    const ComPointer<_Inventory_Class> object = library.make_object();
    OwnedBstr id(u"B1");
    for (int i = 0; i < 1'000; ++i) {
        LONG result = 0;
        REQUIRE(object->AddInventory_ZZD_ZJ(id.out(), &result) == S_OK);
        REQUIRE(result == error::object_not_set);
    }
}

}  // namespace
}  // namespace vantlo::test
