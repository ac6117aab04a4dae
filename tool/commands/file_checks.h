#pragma once

#include <memory>
#include <optional>
#include <span>

#include "bills/master_tables.h"
#include "bookkeeping/import_journal.h"
#include "import/shop_reader.h"
#include "tool/commands/command.h"

namespace vantlo {

namespace words {

// clang-format off
inline constexpr Message id_taken       = {"{} {}：此编号属于另一种单据；保存在 {} 中的各种单据共用编号", "{} {}: a bill of another kind has this id; all kinds that are kept in {} share their ids"};
inline constexpr Message stored_otherwise = {"{} {}：已有此单据，但内容不同", "{} {} is stored already, with other content"};
// clang-format on

}  // namespace words

/// The options of every command that takes files over.
struct FileCheckOptions {
    bool is_strict = false;
    bool says_yes = false;
};

/// Adds --strict and --yes.
std::shared_ptr<FileCheckOptions> add_file_check_options(CLI::App& command, const CommonOptions& common);

/// Adds what is wrong with a bill of the reader's files to its errors, where the database knows the bill otherwise.
void tell_state(ShopReader& reader, const Bill& bill, BillState state);

/// The states of bills that could not be posted, if another host has stored some of them meanwhile; nothing if that is not
/// why, so that the failure stands.
std::optional<std::vector<BillState>> stored_meanwhile(std::span<const Bill* const> bills, const CommonOptions& common);

/// Warns on stderr of what the bills name and nobody knows, and of what would come to nothing.
/// Errors   TaskError with Reason::refused under --strict, with all of it.
void check_names(NativeConnection& database, std::span<const MasterRow> master, std::span<const Bill* const> bills,
                 const FileCheckOptions& options, const CommonOptions& common);

/// Shows on stderr which stored master data would change, and asks where that is a factor of a unit in use.
/// Returns  nothing if it may go on; else the exit code.
std::optional<ExitCode> master_not_confirmed(NativeConnection& database, std::span<const MasterRow> master,
                                             const FileCheckOptions& options, const CommonOptions& common);

}  // namespace vantlo
