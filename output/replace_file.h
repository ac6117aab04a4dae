#pragma once

#include <string>
#include <string_view>

namespace vantlo {

enum class Replaced {
    done,
    is_something_else,  ///< the name belongs to what does not begin as such a file does, and stays as it is
    not_written,        ///< nothing was changed
};

/// Writes a file whole or not at all: into a new file beside it, which then takes its name.
/// `beginning` is how such files begin: what is there under the name is replaced only if it is empty or begins so too.
Replaced replace_file(const std::string& path, std::string_view beginning, const std::string& content);

/// Gives a finished file the name `path`. Where the name is taken, only if `replaces`, and only if what is there is a file
/// that begins so, or an empty one.
Replaced move_into_place(const std::string& finished, const std::string& path, std::string_view beginning,
                         bool replaces);

/// A name beside a file for the new one that is to take its place; no other process uses it.
std::string name_beside(const std::string& path);

}  // namespace vantlo
