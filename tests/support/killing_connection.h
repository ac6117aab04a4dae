#pragma once

#include <csignal>

#include "ado/connection.h"

namespace vantlo::test {

constexpr int never = -1;

/// Passes statements on, and kills its process before or after the n-th of them, counted from 0.
class KillingConnection final : public Connection {
public:
    KillingConnection(Connection& inner, int kill_at, bool before)
        : inner_(inner), kill_at_(kill_at), before_(before) {}

    void add_reference() noexcept override {}
    void release() noexcept override {}
    RecordsetVariable execute(TextView statement) override {
        const bool is_last = statements++ == kill_at_;
        if (is_last && before_) std::raise(SIGKILL);
        RecordsetVariable result = inner_.execute(statement);
        if (is_last) std::raise(SIGKILL);
        return result;
    }

    int statements = 0;

private:
    Connection& inner_;
    int kill_at_;
    bool before_;
};

}  // namespace vantlo::test
