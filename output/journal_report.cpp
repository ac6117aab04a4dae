#include "output/journal_report.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message journal_unsupported = {"数据库没有触发器，无法记录流水。", "The database has no triggers and keeps no journal."};
constexpr Message journal_absent     = {"没有流水；vantlo journal on 开启。", "There is no journal; vantlo journal on begins one."};
constexpr Message journal_off        = {"流水已关闭；已有 {} 条。", "The journal is off; it has {} movements."};
constexpr Message journal_incomplete = {"流水不完整：缺少触发器，或触发器已停用；已有 {} 条。vantlo journal on 补齐。",
                                        "The journal is incomplete: triggers are missing or disabled; it has {} movements. vantlo journal on makes it whole."};
constexpr Message journal_broken     = {"流水的触发器还在，而表 StockMovement 已不存在：台账的任何改动都会失败。vantlo journal on 重新开始，vantlo journal off 去掉触发器。",
                                        "The journal's triggers are there but its table StockMovement is not: every change of the ledger fails. vantlo journal on begins anew, vantlo journal off removes the triggers."};
constexpr Message journal_on         = {"流水已开启；已有 {} 条。", "The journal is on; it has {} movements."};
constexpr Message ledger_explained   = {"台账等于各次变动之和。", "The ledger is the sum of its movements."};
constexpr Message ledger_unexplained = {"{} 个键的台账不等于各次变动之和：", "Ledger keys that are not the sum of their movements: {}"};
constexpr Message unexplained_key    = {"{}：台账 收入 {} 发出 {} 结存 {}，流水 收入 {} 发出 {} 结存 {}",
                                        "{}: ledger received {} issued {} on hand {}, movements received {} issued {} on hand {}"};
// clang-format on

}  // namespace words

namespace {

const Message& about(JournalState state) {
    switch (state) {
        case JournalState::unsupported: return words::journal_unsupported;
        case JournalState::absent: return words::journal_absent;
        case JournalState::off: return words::journal_off;
        case JournalState::incomplete: return words::journal_incomplete;
        case JournalState::broken: return words::journal_broken;
        case JournalState::on: break;
    }
    return words::journal_on;
}

}  // namespace

std::string report_of(const JournalStatus& status, Language language) {
    std::string report = say(language, about(status.state), status.movements) + "\n";
    if (status.state != JournalState::on && status.state != JournalState::incomplete) return report;
    if (status.unexplained.empty()) return report + say(language, words::ledger_explained) + "\n";
    report += say(language, words::ledger_unexplained, status.unexplained.size()) + "\n";
    for (const auto& [ledger, moved] : status.unexplained) {
        report += "  " +
                  say(language, words::unexplained_key, key_text(ledger, language), quantity_text(ledger.received),
                      quantity_text(ledger.issued), quantity_text(ledger.on_hand), quantity_text(moved.received),
                      quantity_text(moved.issued), quantity_text(moved.on_hand)) +
                  "\n";
    }
    return report;
}

}  // namespace vantlo
