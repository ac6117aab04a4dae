#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

namespace vantlo {

/// The number by which automation hosts know a failure; never 0.
using ErrorNumber = std::int32_t;

/// Names of the error numbers that this system raises itself; databases add their own.
namespace error {

// Automation's own run-time errors.
inline constexpr ErrorNumber invalid_call = 5;
inline constexpr ErrorNumber overflow = 6;
inline constexpr ErrorNumber out_of_memory = 7;
inline constexpr ErrorNumber type_mismatch = 13;
inline constexpr ErrorNumber object_not_set = 91;
inline constexpr ErrorNumber invalid_use_of_null = 94;
inline constexpr ErrorNumber object_required = 424;
inline constexpr ErrorNumber no_such_interface = 430;
inline constexpr ErrorNumber no_such_member = 438;
inline constexpr ErrorNumber automation_error = 440;
inline constexpr ErrorNumber no_such_action = 445;
inline constexpr ErrorNumber named_argument_not_found = 448;
inline constexpr ErrorNumber argument_not_optional = 449;
inline constexpr ErrorNumber wrong_argument_count = 450;
inline constexpr ErrorNumber bad_type = 458;

// What a recordset or connection object reports about its own use.
inline constexpr ErrorNumber bad_argument = 3001;
inline constexpr ErrorNumber no_current_row = 3021;
inline constexpr ErrorNumber no_such_item = 3265;
inline constexpr ErrorNumber object_closed = 3704;
inline constexpr ErrorNumber object_open = 3705;
inline constexpr ErrorNumber no_connection = 3709;

// What a database reports, under the numbers that ADO gives.
inline constexpr ErrorNumber syntax_error = -2147217900;          // 0x80040E14
inline constexpr ErrorNumber no_such_table = -2147217865;         // 0x80040E37
inline constexpr ErrorNumber no_such_column = -2147217904;        // 0x80040E10
inline constexpr ErrorNumber constraint_violated = -2147217873;   // 0x80040E2F
inline constexpr ErrorNumber value_does_not_fit = -2147217833;    // 0x80040E57
inline constexpr ErrorNumber cannot_convert_value = -2147217913;  // 0x80040E07
inline constexpr ErrorNumber permission_denied = -2147217911;     // 0x80040E09
inline constexpr ErrorNumber login_failed = -2147217843;          // 0x80040E4D
inline constexpr ErrorNumber time_out = -2147217871;              // 0x80040E31
inline constexpr ErrorNumber locked_by_another = -2147217864;     // 0x80040E38
inline constexpr ErrorNumber unspecified = -2147467259;           // 0x80004005, a lost connection among others

}  // namespace error

/// The one exception of the portable core and its adapters: an error number.
///
/// `what()` is the adapter's description in UTF-8: the engine's message, a cause, a remedy. Hosts may show it; the
/// component's message box does not.
class Failure : public std::exception {
public:
    explicit Failure(ErrorNumber number) : number_(number) {}
    Failure(ErrorNumber number, std::string account) : number_(number), account_(std::move(account)) {}

    [[nodiscard]] ErrorNumber number() const noexcept { return number_; }
    [[nodiscard]] const char* what() const noexcept override { return account_.c_str(); }

private:
    ErrorNumber number_;
    std::string account_;
};

/// The number of the exception being handled; call it inside a `catch (...)` only.
/// Returns  a Failure's number, out_of_memory for std::bad_alloc, automation_error for anything else; never 0.
ErrorNumber number_of_current_exception() noexcept;

}  // namespace vantlo
