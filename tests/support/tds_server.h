#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "automation/text.h"

namespace vantlo::test {

/// A server's error as the protocol sends it.
struct TdsError {
    std::int32_t number;
    Text message;
    std::uint8_t severity = 16;
};

/// The type and the value of the one field of a result.
struct TdsField {
    enum class Type { integer, text, time } type;
    Text value;  ///< in digits; of a time, the tenths of microseconds since midnight
};

/// What the server does about a statement: nothing but say that it is done, fail, return one row, or hang up.
struct HangUp {};
struct Done {};
using TdsAnswer = std::variant<Done, TdsError, TdsField, HangUp>;

/// A deadlock ends the transaction, as the real server's does; the end of none is an error.
constexpr std::int32_t tds_deadlock = 1205;

/// A server on loopback that speaks TDS 7.4, byte for byte, as far as a driver needs it to log in, send statements and end
/// transactions. What it answers comes from the test: the driver is the real one, the server a script.
class TdsServer {
public:
    struct Script {
        /// The answer to a statement; it comes from the thread of the connection.
        std::function<TdsAnswer(const Text& statement)> statement;
        /// Whether the server hangs up when it is asked for the rollback of a transaction.
        bool hangs_up_at_rollback = false;
        /// The refusal of a login, if it is refused.
        std::optional<TdsError> login = std::nullopt;
    };

    explicit TdsServer(Script script);
    TdsServer(const TdsServer&) = delete;
    TdsServer& operator=(const TdsServer&) = delete;
    ~TdsServer();

    /// An ODBC connection string for it, without a password.
    [[nodiscard]] std::string connection_string() const;

    /// The password of the latest login.
    [[nodiscard]] Text password() const;

    /// The statements of all connections so far, and `begin`, `commit` and `rollback` where a transaction did so.
    [[nodiscard]] std::vector<Text> received() const;

private:
    class State;
    std::unique_ptr<State> state_;
};

}  // namespace vantlo::test
