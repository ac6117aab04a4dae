#include <functional>
#include <thread>
#include <utility>
#include <vector>

#include "tests/com/declared_line.h"
#include "tests/com/free_threaded_client.h"
#include "tests/com/posting_host.h"
#include "tests/com/registered.h"

namespace vantlo::test {
namespace {

TEST_CASE("A client in the multithreaded apartment gets the registered class, early and late bound") {
    const Registered component(VANTLO_COMPONENT);
    check_free_threaded_client();
}

/// One piece, whose first property does something before it answers.
class PieceLine final : public Line {
public:
    explicit PieceLine(std::function<void()> before_first = [] {}) : before_first_(std::move(before_first)) {}

    Variant value(TextView name) override {
        std::exchange(before_first_, [] {})();
        return properties_.at(to_utf8(name));
    }

private:
    std::function<void()> before_first_;
    std::map<std::string, Variant> properties_ = one_piece().line;
};

/// A thread with an apartment of its own that posts through another apartment's object.
class ClientThread {
public:
    ClientThread(_Inventory_Class& object, std::function<void(_Inventory_Class& object)> work) {
        IStream* stream = nullptr;
        REQUIRE(CoMarshalInterThreadInterfaceInStream(IID__Inventory_Class, &object, &stream) == S_OK);
        thread_ = std::thread([this, stream, work = std::move(work)] {
            const Apartment apartment;
            ComPointer<_Inventory_Class> proxy;
            const HRESULT result = CoGetInterfaceAndReleaseStream(stream, IID__Inventory_Class, proxy.out_untyped());
            CHECK(result == S_OK);
            if (SUCCEEDED(result)) work(*proxy.get());
            proxy = nullptr;
            has_ended_ = true;
        });
    }
    ~ClientThread() { thread_.join(); }
    ClientThread(const ClientThread&) = delete;
    ClientThread& operator=(const ClientThread&) = delete;

    [[nodiscard]] bool has_ended() const { return has_ended_; }

private:
    std::atomic<bool> has_ended_ = false;
    std::thread thread_;
};

LONG post_piece(_Inventory_Class& object, PieceLine& line) {
    const ComPointer<RGStockItem> item(new RGStockItem(line));
    _RGStockItemObject* passed = item.get();
    LONG result = -1;
    CHECK(object.RG_In_AddInventory(&passed, &result) == S_OK);
    return result;
}

/// An event that one thread waits for and another sets.
struct Event {
    HANDLE handle = CreateEventW(nullptr, TRUE, FALSE, nullptr);

    Event() = default;
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;
    ~Event() { CloseHandle(handle); }

    void set() const { SetEvent(handle); }
    [[nodiscard]] bool wait() const { return WaitForSingleObject(handle, 20'000) == WAIT_OBJECT_0; }
};

TEST_CASE("Two apartments post through one object of a third, one of them while a line of the other is being read") {
    const Registered component(VANTLO_COMPONENT);
    const RegisteredAdo ado;
    SetEnvironmentVariableW(L"VANTLO_UNATTENDED", L"1");
    const Apartment apartment;
    const ClassRegistration recordsets = own_recordsets();
    HostDatabase host;
    ComPointer<_Inventory_Class> object;
    REQUIRE(CoCreateInstance(CLSID_Inventory_Class, nullptr, CLSCTX_INPROC_SERVER, IID__Inventory_Class,
                             object.out_untyped()) == S_OK);
    REQUIRE(object->putref_ADOConn(host.connection.get()) == S_OK);
    constexpr int rounds = 10;
    const Event is_read, is_posted;
    {
        const ClientThread one(*object.get(), [&](_Inventory_Class& proxy) {
            PieceLine slow([&] {
                is_read.set();
                CHECK(is_posted.wait());
            });
            CHECK(post_piece(proxy, slow) == 0);
            PieceLine line;
            for (int i = 1; i < rounds; ++i) CHECK(post_piece(proxy, line) == 0);
        });
        const ClientThread other(*object.get(), [&](_Inventory_Class& proxy) {
            CHECK(is_read.wait());
            PieceLine line;
            CHECK(post_piece(proxy, line) == 0);
            is_posted.set();
            for (int i = 1; i < rounds; ++i) CHECK(post_piece(proxy, line) == 0);
        });
        while (!one.has_ended() || !other.has_ended()) {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
            for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) DispatchMessageW(&message);
        }
    }
    CHECK(read_ledger(host.database->connection()) ==
          std::vector<std::string>{"W1 G1 '' '' 1 | in 20 out 0 current 20 | '' pcs ''"});
    REQUIRE(object->putref_ADOConn(nullptr) == S_OK);
    CHECK(host.connection->references() == 1);
}

}  // namespace
}  // namespace vantlo::test
