#pragma once

#include "tool/commands/command.h"

namespace vantlo {

/// Adds the hidden `complete`, which the shell's completion calls: names of the database that begin with what was typed, one a
/// line. `complete warehouse W0`, `complete goods G`, `complete class ''`, `complete bill stock-in R1`.
///
/// It prints nothing where it knows nothing, or not soon enough, and makes no file. Names with control characters are left out.
void add_complete_command(CLI::App& app, CommandCall& call);

}  // namespace vantlo
