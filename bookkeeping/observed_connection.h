#pragma once

#include <functional>
#include <string>

#include "ado/native/native_connection.h"
#include "bookkeeping/posting_watch.h"

namespace vantlo {

/// Passes statements on to the database, shows each to the host as it is sent, and keeps the database's own words of
/// the latest failure: the component's message gives only the number's text. Once the user has asked to stop, it raises
/// TaskError with Reason::interrupted for each statement instead.
class ObservedConnection final : public Connection {
public:
    using Show = std::function<void(TextView statement)>;

    /// `watch` sees every statement before it is sent, and its result; it may be null.
    explicit ObservedConnection(NativeConnection& database, Show show = {}, PostingWatch* watch = nullptr)
        : database_(database), show_(std::move(show)), watch_(watch) {}

    void add_reference() noexcept override {}  // it lives with the host, which lets go of it last
    void release() noexcept override {}
    RecordsetVariable execute(TextView statement) override;

    /// What the database said of the latest failure; empty if nothing has failed.
    [[nodiscard]] const std::string& account() const { return account_; }

    [[nodiscard]] NativeConnection& database() const { return database_; }

private:
    NativeConnection& database_;
    Show show_;
    PostingWatch* watch_;
    std::string account_;
};

}  // namespace vantlo
