#pragma once

#include <utility>

#include "ado/recordset.h"

namespace vantlo {

/// An open database connection that belongs to the host: what this system uses of an ADO Connection.
///
/// It counts its references. ConnectionReference does the counting, except where a plain pointer is needed as plain data.
class Connection {
public:
    Connection() = default;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    virtual void add_reference() noexcept = 0;
    virtual void release() noexcept = 0;

    /// Runs one statement as it stands.
    /// Returns  its result, read to the end; closed if the statement yields none.
    /// Errors   Failure under the number that ADO would report; nothing of the statement is applied then.
    virtual RecordsetVariable execute(TextView statement) = 0;

protected:
    virtual ~Connection() = default;
};

/// A counted reference to a connection, or to none.
class ConnectionReference {
public:
    ConnectionReference() = default;
    ConnectionReference(std::nullptr_t) {}
    explicit ConnectionReference(Connection* connection) : connection_(connection) {
        if (connection_ != nullptr) connection_->add_reference();
    }
    ConnectionReference(const ConnectionReference& other) : ConnectionReference(other.connection_) {}
    ConnectionReference(ConnectionReference&& other) noexcept
        : connection_(std::exchange(other.connection_, nullptr)) {}
    ConnectionReference& operator=(ConnectionReference other) noexcept {
        std::swap(connection_, other.connection_);
        return *this;
    }
    ~ConnectionReference() {
        if (connection_ != nullptr) connection_->release();
    }

    [[nodiscard]] Connection* get() const { return connection_; }

private:
    Connection* connection_ = nullptr;
};

}  // namespace vantlo
