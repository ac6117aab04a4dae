#pragma once

#include "ado/native/native_connection.h"

namespace vantlo {

/// A transaction that reads one state of the database, whatever is written meanwhile; it ends with the object. On an engine
/// that has none by itself it does nothing, and each statement reads the state of its own moment.
class Snapshot {
public:
    explicit Snapshot(NativeConnection& database) : database_(database) {
        if (database.dialect().begin_snapshot != nullptr) database.run(database.dialect().begin_snapshot);
    }
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;
    ~Snapshot() {
        if (database_.dialect().begin_snapshot == nullptr) return;
        try {
            database_.run(u"rollback");
        } catch (...) {
            // The connection is lost, and the transaction with it.
        }
    }

private:
    NativeConnection& database_;
};

}  // namespace vantlo
