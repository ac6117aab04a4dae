#include <doctest/doctest.h>

#include <thread>

#include "tests/com/posting_host.h"
#include "tests/com/process_use.h"

// Hosts that load and free the library again and again. The tests that fail nothing come first: the library stays loaded
// once it has thrown.

namespace vantlo::test {
namespace {

TEST_CASE(
    "A host that loads the library, posts and frees it runs a thousand times without a lost byte, slot or handle") {
    HostDatabase host;
    check_thousand_runs_keep_nothing([&] {
        std::thread([&] {
            const Apartment apartment;
            const UnattendedLibrary library;
            const ClassRegistration recordsets = own_recordsets();
            CHECK(post_one(library, *host.connection.get()) == 0);
            CHECK(library.can_unload());
        }).join();
        CHECK(GetModuleHandleW(L"Vantlo.dll") == nullptr);
    });
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

TEST_CASE("A host whose posting fails after each load runs a thousand times without a lost byte, slot or handle") {
    check_thousand_runs_keep_nothing(load_and_fail);
}

// The last, since what such a thread held is lost.
TEST_CASE("A thread that is ended inside a call costs its own connection alone") {
    const Apartment apartment;
    const UnattendedLibrary library;
    const ClassRegistration recordsets = own_recordsets();
    HostDatabase ended, others;
    HANDLE is_inside = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    /// A line whose first property never answers.
    class EndlessLine final : public Line {
    public:
        explicit EndlessLine(HANDLE event) : event_(event) {}
        Variant value(TextView) override {
            SetEvent(event_);
            Sleep(INFINITE);
            return {};
        }

    private:
        HANDLE event_;
    } endless(is_inside);
    struct Victim {
        const ComponentLibrary& component;
        AdoConnection& connection;
        Line& line;

        static DWORD WINAPI run(void* parameter) {
            const auto& self = *static_cast<Victim*>(parameter);
            CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
            const ComPointer<LineObject> host_line(new LineObject(self.line));
            const ComPointer<_Inventory_Class> object = self.component.make_object();
            object->putref_ADOConn(&self.connection);
            call_method(Road::by_name, *object.get(), *find_method(u"RG_In_AddInventory"), {{host_line.get(), {}}});
            return 0;
        }
    } victim{library, *ended.connection.get(), endless};
    const HANDLE thread = CreateThread(nullptr, 0, Victim::run, &victim, 0, nullptr);
    REQUIRE(WaitForSingleObject(is_inside, 10'000) == WAIT_OBJECT_0);
    REQUIRE(TerminateThread(thread, 1));
    REQUIRE(WaitForSingleObject(thread, 10'000) == WAIT_OBJECT_0);
    CloseHandle(thread);
    CloseHandle(is_inside);
    CHECK(ended.connection->references() > 1);
    for (int i = 0; i < 100; ++i) {
        REQUIRE(post_one(library, *others.connection.get()) == 0);
        std::thread([&] {
            const Apartment own;
            const ClassRegistration own_ones = own_recordsets();
            CHECK(post_one(library, *others.connection.get()) == 0);
        }).join();
    }
    CHECK(others.connection->references() == 1);
    CHECK_FALSE(library.can_unload());
}

}  // namespace
}  // namespace vantlo::test
