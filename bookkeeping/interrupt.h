#pragma once

namespace vantlo {

/// From now on the first Ctrl-C (or SIGTERM) asks the program to stop where nothing is left half done, and cancels what it
/// waits for on a server; a second one ends it at once, and the database rolls back by itself.
void ask_before_interrupting();

[[nodiscard]] bool is_interrupted();

/// Errors   TaskError with Reason::interrupted, if the user has asked to stop.
void stop_if_interrupted();

}  // namespace vantlo
