#include "output/conditions_report.h"

#include <algorithm>

#include "automation/message.h"

namespace vantlo {

namespace {

struct ConditionRow {
    Condition condition;
    Message wording;
};

// clang-format off
constexpr ConditionRow rows[] = {
    {Condition::no_ledger,          {"没有表 Inventory；vantlo init 建立数据表",
                                     "there is no table Inventory: vantlo init makes the tables"}},
    {Condition::column_missing,     {"Inventory 缺少 {} 列，过账和修复会失败；请添加该列",
                                     "Inventory has no column {}, and postings fail: add it"}},
    {Condition::older_table,        {"{} 列缺失，该表由较早的版本建立；vantlo init 补上",
                                     "there is no column {}, as an earlier version made the table: vantlo init adds it"}},
    {Condition::ledger_is_view,     {"Inventory 是视图，不是表；数据库不能为它记录流水，写入是否到达由视图决定",
                                     "Inventory is a view, not a table: no journal of movements can be kept of it, and it is up to the view whether what is written arrives"}},
    {Condition::no_rollback,        {"{} 的存储引擎不能回滚：失败的单据和演习都会留下数据；请用 alter table … engine=InnoDB 更改。在此之前不过账、不导入、不修复",
                                     "the storage engine of {} cannot roll back, so that a failed bill and a dry run would stay: alter table ... engine=InnoDB changes it. Until then nothing is posted, imported or repaired"}},
    {Condition::key_ignores_case,   {"提示：{} 不区分大小写，ga 与 GA 共用一行；请改用精确的排序规则（见 docs/databases.md）",
                                     "hint: {} compare without regard to case, so that ga and GA share a row: give the columns an exact collation (docs/databases.md)"}},
    {Condition::key_ignores_width,  {"提示：{} 不区分全角半角，G１ 与 G1 共用一行；请改用精确的排序规则（见 docs/databases.md）",
                                     "hint: {} compare without regard to width, so that G１ and G1 share a row: give the columns an exact collation (docs/databases.md)"}},
    {Condition::key_ignores_blanks, {"提示：{} 不计末尾的空格，末尾有空格的键与没有的共用一行；请改用精确的排序规则（见 docs/databases.md）",
                                     "hint: {} compare without the blanks at the end, so that keys with and without them share a row: give the columns an exact collation (docs/databases.md)"}},
    {Condition::no_key_index,       {"提示：台账没有以 WID、GId 开头的索引，每次过账都要读完整个台账；请建立索引（见 schema/ 中的 InventoryKey）",
                                     "hint: the ledger has no index that begins with WID, GId, and each posting reads all of it: make one, like InventoryKey in schema/"}},
    {Condition::other_trigger,      {"提示：Inventory 上另有触发器或规则 {}；它若吞掉或改动写入的内容，台账就与单据不符",
                                     "hint: there is another trigger or rule on Inventory, {}: where it swallows or alters what is written, ledger and bills differ"}},
};
// clang-format on

}  // namespace

std::string text_of(const LedgerCondition& condition, Language language) {
    return say(language, std::ranges::find(rows, condition.condition, &ConditionRow::condition)->wording,
               condition.subject);
}

std::string report_of(const std::vector<LedgerCondition>& conditions, Language language) {
    std::string report;
    for (const LedgerCondition& condition : conditions) report += text_of(condition, language) + "\n";
    return report;
}

}  // namespace vantlo
