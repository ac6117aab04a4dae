// What a call through COM takes: a posted line, on ADO objects that answer at once, beside an empty call. Each is made as a
// compiled host makes it, through the interface's table of functions, and as a script does, by name.
//
// Usage: com_calls CALLS      makes so many calls of each kind, and prints the rows of a Markdown table

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "bench/instant_database.h"
#include "bench/measure.h"
#include "tests/com/line_object.h"
#include "tests/com/member_call.h"
#include "tests/support/ado_stand_in/ado_recordset.h"
#include "tests/support/com/class_factory.h"

namespace {

using namespace vantlo;
using namespace vantlo::bench;
using namespace vantlo::test;

// Long enough for the clock, and short enough for most of them to be left alone by other work on the machine.
constexpr int empty_calls = 1000, posted_lines = 10;

/// The median time of a call in microseconds, over batches of so many.
template <typename Call>
double microseconds(int calls, int batch, const Call& call) {
    std::vector<double> times;
    for (int made = 0; made < calls; made += batch) {
        times.push_back(seconds_of(Clock::wall, [&] {
            for (int i = 0; i < batch; ++i) call();
        }));
    }
    return median(times) / batch * 1e6;
}

void require(HRESULT status) {
    if (status != S_OK) throw std::runtime_error("a call is refused: " + std::to_string(status));
}

void read_property(_Inventory_Class& object) {
    _Connection* connection = nullptr;
    require(object.get_ADOConn(&connection));
    connection->Release();
}

void read_property_by_name(_Inventory_Class& object) {
    wchar_t name[] = L"ADOConn";
    LPOLESTR names = name;
    DISPID identifier = DISPID_UNKNOWN;
    require(object.GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &identifier));
    DISPPARAMS none = {};
    OwnedVariant connection;
    require(object.Invoke(identifier, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, connection.get(),
                          nullptr, nullptr));
}

void make_recordset() {
    ComPointer<IUnknown> recordset;
    require(
        CoCreateInstance(ado::recordset_class, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, recordset.out_untyped()));
}

void post_line(Road road, _Inventory_Class& object, IDispatch& line) {
    if (call_method(road, object, *find_method(u"AddInventory_Db"), {ComArgument{&line, {}}}) != 0) {
        throw std::runtime_error("the posting failed");
    }
}

void measure(int calls) {
    const Apartment apartment;
    const ComponentLibrary library;
    library.show_messages_on_stderr();
    const ClassRegistration recordsets(ado::recordset_class, [] {
        return ComPointer<IUnknown>(new AdoRecordset(std::make_unique<InstantRecordset>()));
    });
    InstantConnection database;
    const ComPointer<AdoConnection> connection(new AdoConnection(database));
    const ComPointer<_Inventory_Class> object = library.make_object();
    require(object->putref_ADOConn(connection.get()));
    InstantLine line;
    const ComPointer<LineObject> host_line(new LineObject(line));

    std::printf("| an empty call: the property `ADOConn` is read | %.3f µs | %.3f µs |\n",
                microseconds(calls, empty_calls, [&] { read_property(*object.get()); }),
                microseconds(calls, empty_calls, [&] { read_property_by_name(*object.get()); }));
    std::printf("| COM makes an `ADODB.Recordset`, as each line's unit look-up has it do | %.1f µs | |\n",
                microseconds(calls, posted_lines, make_recordset));
    std::printf(
        "| `AddInventory_Db`, a line between two warehouses | %.1f µs | %.1f µs |\n",
        microseconds(calls, posted_lines, [&] { post_line(Road::early_bound, *object.get(), *host_line.get()); }),
        microseconds(calls, posted_lines, [&] { post_line(Road::by_name, *object.get(), *host_line.get()); }));
    require(object->putref_ADOConn(nullptr));
}

}  // namespace

int main(int count, char** arguments) {
    const int calls = count == 2 ? std::atoi(arguments[1]) : 0;
    if (calls <= 0) {
        std::fputs("Usage: com_calls CALLS\n", stderr);
        return 2;
    }
    try {
        measure(calls);
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "com_calls: %s\n", failure.what());
        return 1;
    }
}
