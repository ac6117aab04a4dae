#pragma once

#include "automation/message.h"

namespace vantlo {

/// The language of the user's locale: Chinese for every zh, English for all others.
/// Source   the first of LC_ALL, LC_MESSAGES and LANG that is set and not empty, as POSIX orders them.
Language language_of_locale();

/// Texts that several files of the program show. A text that only one shows stands in that file.
namespace words {

// clang-format off

// Help
inline constexpr Message option_badge   = {"选项", "OPTIONS"};
inline constexpr Message command_badge  = {"命令", "COMMAND"};
inline constexpr Message help_option    = {"显示此帮助并退出", "Show this help and exit"};
inline constexpr Message yes_option     = {"不再询问", "Do not ask"};
inline constexpr Message bill_kind      = {"单据种类", "Kind of bill"};
inline constexpr Message bill_id        = {"单据编号", "The bill's identifier"};
inline constexpr Message interrupted_rehearsal = {"已中断；未写入任何数据。", "Interrupted; nothing was written."};

inline constexpr Message exact_cells_option = {"CSV 单元格原样输出；否则以 = + - @ 等开头、会被电子表格当作公式的文字前加单引号", "CSV cells as they are; otherwise a text that a spreadsheet would take for a formula, since it begins with = + - @ or the like, has a ' before it"};

// The ledger's columns
inline constexpr Message warehouse      = {"仓库", "Warehouse"};
inline constexpr Message goods          = {"商品", "Goods"};
inline constexpr Message model1         = {"型号一", "Model 1"};
inline constexpr Message model2         = {"型号二", "Model 2"};
inline constexpr Message status         = {"状态", "Status"};
inline constexpr Message received       = {"收入", "Received"};
inline constexpr Message issued         = {"发出", "Issued"};
inline constexpr Message on_hand        = {"结存", "On hand"};
inline constexpr Message quantity       = {"数量", "Quantity"};

// clang-format on

}  // namespace words

}  // namespace vantlo
