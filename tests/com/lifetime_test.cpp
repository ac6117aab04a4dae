#include <doctest/doctest.h>
#include <windows.h>

// Needs what the one above declares.
#include <psapi.h>

#include <cstdlib>
#include <string>
#include <thread>

#include "tests/com/posting_host.h"
#include "tests/com/released_connection.h"
#include "tests/support/printing.h"

// Objects, threads and the library itself come and go.

namespace vantlo::test {
namespace {

std::size_t memory_in_use() {
    PROCESS_MEMORY_COUNTERS counters = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return counters.PagefileUsage;
}

double pieces(HostDatabase& host) {
    return to_double(
        host.database->connection().execute(u"select coalesce(sum(InQty),0) as n from Inventory")->field(u"n"));
}

/// How many lines the long test posts: VANTLO_SOAK_POSTINGS, or ten thousand.
int rounds_to_post() {
    const char* const given = std::getenv("VANTLO_SOAK_POSTINGS");
    return given != nullptr ? std::stoi(given) : 10'000;
}

TEST_CASE("Thousands of objects made, used and released leave the memory as it was") {
    const Apartment apartment;
    const UnattendedLibrary library;
    const ClassRegistration recordsets = own_recordsets();
    HostDatabase host;
    const int warm_up = 1'000, rounds = rounds_to_post();
    for (int i = 0; i < warm_up; ++i) REQUIRE(post_one(library, *host.connection.get()) == 0);
    const std::size_t before = memory_in_use();
    const long alive = objects_alive;
    for (int i = 0; i < rounds; ++i) REQUIRE(post_one(library, *host.connection.get()) == 0);
    CHECK(pieces(host) == warm_up + rounds);
    CHECK(objects_alive == alive);
    CHECK(library.can_unload());
    const std::size_t after = memory_in_use();
    MESSAGE((before / 1024) << " KB before, " << (after / 1024) << " KB after " << rounds << " rounds");
    CHECK(after < before + before / 100);
}

/// What an apartment of a database kind makes of a date, and where its lines go.
struct ApartmentWork {
    void run(const ComponentLibrary& library, const char16_t* kind) {
        const Apartment apartment;
        const ClassRegistration recordsets = own_recordsets();
        HostDatabase host;
        Recorder recorder;
        RecordingConnection recorded(recorder, host.database->connection());
        const ComPointer<AdoConnection> connection(new AdoConnection(recorded));
        const ComPointer<_Inventory_Class> object = library.make_object();
        CHECK(object->put_DATAType(OwnedBstr(kind).get()) == S_OK);
        CHECK(object->putref_ADOConn(connection.get()) == S_OK);
        std::map<std::string, Variant> properties = one_piece().line;
        properties["SpRemarks"] = Date{45000.5};
        RecordedLine line(recorder, properties);
        const ComPointer<LineObject> host_line(new LineObject(line));
        for (int i = 0; i < rounds; ++i) {
            recorder.events.clear();
            call_method(Road::early_bound, *object.get(), *find_method(u"RG_In_AddInventory"),
                        {ComArgument{host_line.get(), {}}});
            for (const std::string& sent : recorder.trace(Detail::statements)) {
                if (sent.find("'2023-03-15 12:00:00'") != std::string::npos) ++dates_in_quotes;
                if (sent.find("#2023-03-15 12:00:00#") != std::string::npos) ++dates_in_hashes;
            }
        }
        CHECK(object->putref_ADOConn(nullptr) == S_OK);
        booked = pieces(host);
    }

    static constexpr int rounds = 300;
    int dates_in_quotes = 0;
    int dates_in_hashes = 0;
    double booked = 0;
};

TEST_CASE("Two apartments keep their database kinds and connections to themselves") {
    const UnattendedLibrary library;
    ApartmentWork of_sql_server, of_access;
    std::thread one([&] { of_sql_server.run(library, u"[Microsoft SQL Server]"); });
    std::thread other([&] { of_access.run(library, u"[Microsoft Access]"); });
    one.join();
    other.join();
    CHECK(of_sql_server.dates_in_quotes == 1);  // in the one insert; an update does not touch the remarks
    CHECK(of_sql_server.dates_in_hashes == 0);
    CHECK(of_sql_server.booked == ApartmentWork::rounds);
    CHECK(of_access.dates_in_quotes == 0);
    CHECK(of_access.dates_in_hashes == ApartmentWork::rounds);  // SQLite refuses each insert
    CHECK(of_access.booked == 0);
    CHECK(library.can_unload());
}

TEST_CASE("A thread that forgets its connection leaves it to DllCanUnloadNow") {
    const Apartment apartment;
    const UnattendedLibrary library;
    HostDatabase host;
    library.make_object()->putref_ADOConn(host.connection.get());
    CHECK(host.connection->references() > 1);
    CHECK(library.can_unload());
    CHECK(host.connection->references() == 1);
}

TEST_CASE("An object, a factory and a lock each keep the library loaded") {
    const Apartment apartment;
    const UnattendedLibrary library;
    CHECK(library.can_unload());
    {
        const ComPointer<_Inventory_Class> object = library.make_object();
        CHECK_FALSE(library.can_unload());
    }
    {
        const ComPointer<IClassFactory> factory = library.factory();
        CHECK_FALSE(library.can_unload());
        CHECK(factory->LockServer(TRUE) == S_OK);
    }
    CHECK_FALSE(library.can_unload());
    CHECK(library.factory()->LockServer(FALSE) == S_OK);
    CHECK(library.can_unload());
}

TEST_CASE("An object keeps the library loaded until its own references are released") {
    const Apartment apartment;
    const UnattendedLibrary library;
    bool could_unload = false;
    const ComPointer<ReleasedConnection> connection(
        new ReleasedConnection([&] { could_unload |= library.can_unload(); }));
    ComPointer<_Inventory_Class> object = library.make_object();
    CHECK(object->putref_ADOConn(reinterpret_cast<_Connection*>(connection.get())) == S_OK);
    // Another object's connection takes the place of this one in the thread's copy.
    HostDatabase host;
    CHECK(library.make_object()->putref_ADOConn(host.connection.get()) == S_OK);
    CHECK(connection->references() == 2);
    object = nullptr;
    CHECK(connection->references() == 1);
    CHECK_FALSE(could_unload);
    CHECK(library.can_unload());
}

TEST_CASE("The class factory makes no object for an outer one, for another interface, or for another class") {
    const Apartment apartment;
    const UnattendedLibrary library;
    const ComPointer<IClassFactory> factory = library.factory();
    void* made = nullptr;
    CHECK(factory->CreateInstance(factory.get(), IID_IUnknown, &made) == CLASS_E_NOAGGREGATION);
    CHECK(factory->CreateInstance(nullptr, IID_IClassFactory, &made) == E_NOINTERFACE);
    CHECK(made == nullptr);
    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    CHECK(library.function<GetClassObject>("DllGetClassObject")(IID_IUnknown, IID_IClassFactory, &made) ==
          CLASS_E_CLASSNOTAVAILABLE);
}

}  // namespace
}  // namespace vantlo::test
