#pragma once

#include "ado/com/ado_interfaces.h"
#include "ado/com/interface_pointer.h"
#include "ado/connection.h"

namespace vantlo {

/// The host's ADO connection behind the port.
class ComConnection final : public Connection {
public:
    /// Wraps an object that answers for either generation of ADO's connection.
    /// Errors   type_mismatch for an object that answers for neither.
    static ConnectionReference of(IUnknown& object);

    void add_reference() noexcept override;
    void release() noexcept override;
    RecordsetVariable execute(TextView statement) override;

    /// The host's own object.
    [[nodiscard]] AdoConnection& object() const { return *connection_.get(); }

private:
    explicit ComConnection(InterfacePointer<AdoConnection> connection) : connection_(std::move(connection)) {}
    ~ComConnection() override = default;

    InterfacePointer<AdoConnection> connection_;
    long references_ = 0;
};

/// Makes a recordset of ADO's own class. Errors: what CoCreateInstance reports, as an automation host sees it.
RecordsetVariable create_com_recordset();

}  // namespace vantlo
