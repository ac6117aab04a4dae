#pragma once

#include <memory>
#include <optional>
#include <span>

#include "bills/master_tables.h"
#include "tool/commands/command.h"

namespace vantlo {

namespace words {

// clang-format off
inline constexpr Message id_taken       = {"{} {}：此编号属于另一种单据；保存在 {} 中的各种单据共用编号", "{} {}: a bill of another kind has this id; all kinds that are kept in {} share their ids"};
inline constexpr Message import_lost    = {"{} {} 此前已导入，但单据已不在数据库中", "{} {} was imported before, but is no longer stored"};
// clang-format on

}  // namespace words

/// The options of every command that takes files over.
struct FileCheckOptions {
    bool is_strict = false;
    bool says_yes = false;
};

/// Adds --strict and --yes.
std::shared_ptr<FileCheckOptions> add_file_check_options(CLI::App& command, const CommonOptions& common);

/// Warns on stderr of what the bills name and nobody knows, and of what would come to nothing.
/// Errors   TaskError with Reason::refused under --strict, with all of it.
void check_names(NativeConnection& database, std::span<const MasterRow> master, std::span<const Bill* const> bills,
                 const FileCheckOptions& options, const CommonOptions& common);

/// Shows on stderr which stored master data would change, and asks where that is a factor of a unit in use.
/// Returns  nothing if it may go on; else the exit code.
std::optional<ExitCode> master_not_confirmed(NativeConnection& database, std::span<const MasterRow> master,
                                             const FileCheckOptions& options, const CommonOptions& common);

}  // namespace vantlo
