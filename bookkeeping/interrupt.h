#pragma once

#include <stdexcept>

namespace vantlo {

/// The user has asked the program to stop: the bill at hand was rolled back, those before it stay.
class Interrupted : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// From now on the first Ctrl-C (or SIGTERM) asks the program to stop where nothing is left half done; a second one ends it
/// at once, and the database rolls back by itself.
void ask_before_interrupting();

[[nodiscard]] bool is_interrupted();

/// Errors   Interrupted, if the user has asked to stop.
void stop_if_interrupted();

}  // namespace vantlo
