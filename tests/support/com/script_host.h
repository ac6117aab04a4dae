#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "automation/text.h"

namespace vantlo::test {

/// A path of this machine as Windows programs name it. Example: `/tmp/a.vbs` -> `Z:\tmp\a.vbs`.
Text windows_path(const std::string& path);

/// Runs a program of this program's own bitness and waits for its end.
/// Returns  its exit code.
/// Errors   std::runtime_error if it does not start, or runs longer than a minute.
DWORD run_to_end(std::wstring command, HANDLE output = nullptr);

/// Runs a script with the script host of this program's own bitness and waits for its end.
///
/// The host ends in success whatever happens in the script, and says nothing: the last line is the script's own word
/// that it came to its end.
/// Returns  the lines that it printed.
/// Errors   std::runtime_error if the host does not start, or runs longer than a minute.
std::vector<std::string> run_script(const std::string& path, const std::vector<std::string>& arguments = {});

}  // namespace vantlo::test
