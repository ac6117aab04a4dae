#pragma once

#include <stdexcept>
#include <string>

namespace vantlo {

/// Why something that a user asked for was not done.
enum class Reason {
    posting_failed,  ///< nothing of the bill was left behind
    no_such_bill,
    refused,      ///< by the guard; nothing of the bill was left behind
    interrupted,  ///< the user asked to stop: the bill at hand was rolled back, those before it stay
    bad_input,    ///< a file cannot be taken as it is: the text is all that is wrong, and where
    cannot_write,
};

/// Something that a user asked for was not done; `what()` says what happened, for people (UTF-8).
///
/// A failure of the database itself is a Failure; anything else that is raised is a defect of the program, or memory that
/// ran out.
class TaskError : public std::runtime_error {
public:
    TaskError(Reason reason, const std::string& account) : std::runtime_error(account), reason_(reason) {}

    [[nodiscard]] Reason reason() const noexcept { return reason_; }

private:
    Reason reason_;
};

}  // namespace vantlo
