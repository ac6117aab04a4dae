#include <doctest/doctest.h>

#include <thread>
#include <vector>

#include "tests/com/posting_host.h"

// Hosts that load and free the library again and again. The tests that fail nothing come first: the library stays loaded
// once it has thrown.

namespace vantlo::test {
namespace {

/// How many thread slots of the process are left.
std::size_t free_slots() {
    std::vector<DWORD> taken;
    for (DWORD slot; (slot = TlsAlloc()) != TLS_OUT_OF_INDEXES;) taken.push_back(slot);
    for (const DWORD slot : taken) TlsFree(slot);
    return taken.size();
}

DWORD open_handles() {
    DWORD count = 0;
    CHECK(GetProcessHandleCount(GetCurrentProcess(), &count));
    return count;
}

TEST_CASE("The library is loaded, used and freed two hundred times on changing threads") {
    const long alive = objects_alive;
    const std::size_t slots = free_slots();
    const DWORD handles = open_handles();
    for (int i = 0; i < 200; ++i) {
        std::thread([] {
            const Apartment apartment;
            const UnattendedLibrary library;
            const ClassRegistration recordsets = own_recordsets();
            HostDatabase host;
            CHECK(post_one(library, *host.connection.get()) == 0);
            CHECK(library.can_unload());
        }).join();
        CHECK(GetModuleHandleW(L"Vantlo.dll") == nullptr);
    }
    CHECK(objects_alive == alive);
    CHECK(free_slots() == slots);
    CHECK(open_handles() == handles);
}

/// Loads the library, makes one posting that fails without a message, and frees the library.
void load_and_fail() {
    const Apartment apartment;
    const ComponentLibrary library;
    OwnedBstr id(u"B1");
    LONG result = 0;
    CHECK(library.make_object()->AddInventory_ZZD_ZJ(id.out(), &result) == S_OK);
    CHECK(result == error::object_not_set);
    CHECK(library.can_unload());
}

TEST_CASE(
    "Twelve hundred loads, each with a posting that fails, cost no more thread slots and handles than the first") {
    load_and_fail();
    const std::size_t slots = free_slots();
    const DWORD handles = open_handles();
    REQUIRE(slots > 1000);
    for (int i = 1; i < 1'200; ++i) load_and_fail();
    CHECK(free_slots() == slots);
    CHECK(open_handles() == handles);
}

}  // namespace
}  // namespace vantlo::test
