#include <doctest/doctest.h>

#include <thread>

#include "tests/com/posting_host.h"
#include "tests/com/process_use.h"
#include "tests/com/released_connection.h"

// Hosts that end threads without setting ADOConn to nothing.

namespace vantlo::test {
namespace {

/// Sets a new object's connection, and forgets it.
void use_and_forget(const ComponentLibrary& library, IUnknown& connection) {
    CHECK(library.make_object()->putref_ADOConn(reinterpret_cast<_Connection*>(&connection)) == S_OK);
}

TEST_CASE("Ten thousand threads that forget their connection leave no reference to it, nor anything else") {
    const Apartment apartment;
    const UnattendedLibrary library;
    HostDatabase host;
    const auto forget = [&] {
        const Apartment own;
        use_and_forget(library, *host.connection.get());
    };
    check_thousand_runs_keep_nothing([&] {
        for (int i = 0; i < 5; ++i) {
            std::thread one(forget), other(forget);
            one.join();
            other.join();
            REQUIRE(host.connection->references() == 1);
        }
    });
    CHECK(library.can_unload());
}

TEST_CASE("A thread's connection is kept until its apartment is uninitialised for the last time") {
    const UnattendedLibrary library;
    HostDatabase host;
    std::thread([&] {
        const Apartment outer;
        {
            const Apartment inner;
            use_and_forget(library, *host.connection.get());
        }
        CHECK(host.connection->references() == 2);
    }).join();
    CHECK(host.connection->references() == 1);
}

TEST_CASE("A forgotten connection is released where another thread can load libraries") {
    const UnattendedLibrary library;
    bool could_load = false;
    const ComPointer<ReleasedConnection> connection(new ReleasedConnection([&] {
        // A thread takes the loader's lock when it starts and when it ends.
        std::thread other([] {});
        could_load = WaitForSingleObject(reinterpret_cast<HANDLE>(pthread_gethandle(other.native_handle())), 5000) == 0;
        other.detach();
    }));
    std::thread([&] {
        const Apartment own;
        use_and_forget(library, *connection.get());
        could_load = false;
    }).join();
    CHECK(connection->references() == 1);
    CHECK(could_load);
}

TEST_CASE("The library stays loaded as long as another thread's apartment holds a connection") {
    const Apartment apartment;
    const UnattendedLibrary library;
    HostDatabase host;
    bool could_unload = true;
    std::thread([&] {
        const Apartment own;
        use_and_forget(library, *host.connection.get());
        std::thread([&] { could_unload = library.can_unload(); }).join();
    }).join();
    CHECK_FALSE(could_unload);
    CHECK(library.can_unload());
}

TEST_CASE("A library that was freed before the apartment is uninitialised still lets the connection go") {
    HostDatabase host;
    std::thread([&] {
        const Apartment own;
        const UnattendedLibrary library;
        use_and_forget(library, *host.connection.get());
    }).join();
    CHECK(host.connection->references() == 1);
}

TEST_CASE("A thread that ends without uninitialising its apartment leaves its reference behind, and the library goes") {
    const Apartment apartment;
    const UnattendedLibrary library;
    HostDatabase host;
    std::thread([&] {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        use_and_forget(library, *host.connection.get());
    }).join();
    CHECK(host.connection->references() == 2);
    CHECK(library.can_unload());
}

}  // namespace
}  // namespace vantlo::test
