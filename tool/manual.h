#pragma once

#include "tool/commands/command.h"

namespace vantlo {

// Manual page and completion, generated from the definition of the command line.

/// The manual page, for man, in the user's language.
/// Source   man-pages(7) and groff_man(7).
std::string manual_page(const CLI::App& app, const CommonOptions& common);

/// The script with which bash completes commands, options, kinds of bills, members and file names.
std::string bash_completion(const CLI::App& app);

}  // namespace vantlo
