#pragma once

namespace vantlo {

/// Makes a statement known to cancel_odbc_statements for as long as it runs.
class RunningStatement {
public:
    /// handle   an ODBC statement, which outlives the object
    explicit RunningStatement(void* handle);
    RunningStatement(const RunningStatement&) = delete;
    RunningStatement& operator=(const RunningStatement&) = delete;
    ~RunningStatement();

private:
    friend void cancel_odbc_statements() noexcept;

    void* handle_;
    RunningStatement* next_;  // all of them are a list
    RunningStatement* previous_ = nullptr;
};

}  // namespace vantlo
