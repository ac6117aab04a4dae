#pragma once

#include "ado/native/native_connection.h"
#include "tests/com/line_object.h"
#include "tests/com/member_call.h"
#include "tests/support/ado_stand_in/ado_recordset.h"
#include "tests/support/com/class_factory.h"
#include "tests/support/scenario_runner.h"

// A host that posts lines of the return and repair family, one piece each.

namespace vantlo::test {

/// The library in a test that no window may hold up.
struct UnattendedLibrary : ComponentLibrary {
    UnattendedLibrary() { show_messages_on_stderr(); }
};

/// A host's own connection to a database of its own.
struct HostDatabase {
    std::unique_ptr<TestDatabase> database = make_sqlite_database();
    ComPointer<AdoConnection> connection{new AdoConnection(database->connection())};
};

inline ComPointer<IUnknown> make_own_recordset() {
    return ComPointer<IUnknown>(new AdoRecordset(make_client_recordset()));
}

inline ClassRegistration own_recordsets() { return {ado::recordset_class, make_own_recordset}; }

/// A line that books one piece into a warehouse.
inline Scenario one_piece() {
    Scenario scenario;
    scenario.line = {{"WID", Text(u"W1")}, {"Gid", Text(u"G1")},   {"Model1", Text()}, {"Model2", Text()},
                     {"Class", Text()},    {"Unit", Text(u"pcs")}, {"Qty", 1.0F},      {"GoodsStatus", std::int32_t{1}},
                     {"SpRemarks", Text()}};
    return scenario;
}

/// One line posted through a new object, everything let go of behind it. Returns: the posting's result.
inline LONG post_one(const ComponentLibrary& library, AdoConnection& connection) {
    Recorder recorder;
    RecordedLine line(recorder, one_piece().line);
    const ComPointer<LineObject> host_line(new LineObject(line));
    const ComPointer<_Inventory_Class> object = library.make_object();
    if (object->putref_ADOConn(&connection) != S_OK) throw std::runtime_error("the connection is refused");
    const LONG result = call_method(Road::by_name, *object.get(), *find_method(u"RG_In_AddInventory"),
                                    {ComArgument{host_line.get(), {}}});
    if (object->putref_ADOConn(nullptr) != S_OK) throw std::runtime_error("the connection is not let go of");
    return result;
}

}  // namespace vantlo::test
