#include "tool/page/page_words.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "output/words.h"

namespace vantlo {

namespace {

// clang-format off
constexpr PageWord all_words[] = {
    {"title",            {"库存", "Stock"}},
    {"skip",             {"跳到台账", "Skip to the ledger"}},
    {"contents",         {"目录", "Contents"}},
    {"summary",          {"概况", "Summary"}},
    {"attention",        {"需要留意", "Needs attention"}},
    {"over_time",        {"库存变化", "Over time"}},
    {"ledger",           {"台账", "Ledger"}},
    {"back",             {"← 返回台账", "← Back to the ledger"}},
    {"filters",          {"筛选台账", "Filter the ledger"}},
    {"search",           {"查找", "Search"}},
    {"warehouse",        words::warehouse},
    {"goods",            words::goods},
    {"model1",           words::model1},
    {"model2",           words::model2},
    {"status",           words::status},
    {"class",            {"类别", "Class"}},
    {"unit",             {"单位", "Unit"}},
    {"received",         words::received},
    {"issued",           words::issued},
    {"on_hand",          words::on_hand},
    {"only_negative",    {"结存为负", "Below zero"}},
    {"only_nonzero",     {"结存不为零", "Not zero"}},
    {"reset",            {"清除", "Clear"}},
    {"all",              {"全部", "All"}},
    {"none",             {"（无）", "(none)"}},
    {"ledger_caption",   {"每个仓库、商品、型号和状态一行；数量以商品的基本单位计", "A row for each warehouse, goods, model and status; quantities in the goods' own unit"}},
    {"all_rows",         {"共 {} 行", "{:row|rows}"}},
    {"some_rows",        {"{} 行，共 {} 行", "{} of {:row|rows}"}},
    {"several_units",    {"不同单位不相加；选定单位即可看到合计", "different units are not added up: choose one for its totals"}},
    {"printed_rows",     {"打印时只印前 {} 行", "only the first {} are printed"}},
    {"no_rows",          {"没有符合条件的行", "No such rows"}},
    {"rows_shown",       {"第 {}–{} 行，共 {} 行", "{}–{} of {}"}},
    {"rows_a_page",      {"每页行数", "Rows a page"}},
    {"previous_page",    {"上一页", "Previous"}},
    {"next_page",        {"下一页", "Next"}},
    {"sort_ascending",   {"：按此列升序排列", ": sort by this, the smallest first"}},
    {"sort_descending",  {"：按此列降序排列", ": sort by this, the largest first"}},
    {"total_in",         {"合计（{}），{} 行", "Total in {} ({:row|rows})"}},
    {"total",            {"合计 {} 行", "Total of {:row|rows}"}},
    {"movement_by",      {"收发按", "Movement by"}},
    {"day",              {"日", "Day"}},
    {"month",            {"月", "Month"}},
    {"stock_of",         {"结存（{}）：{} 为 {}，{} 为 {}", "On hand in {}: {} had {}, {} has {}"}},
    {"movement_by_day",  {"每日收发（{}）", "Received and issued each day, in {}"}},
    {"movement_by_month", {"每月收发（{}）", "Received and issued each month, in {}"}},
    {"opening",          {"期初", "Opening"}},
    {"closing",          {"期末", "Closing"}},
    {"movements",        {"变动次数", "Movements"}},
    {"card_title",       {"{}，{}，状态 {}", "{}, {}, status {}"}},
    {"card_caption",     {"每次变动及其后的结存", "Each movement, and the balance after it"}},
    {"time",             {"时间", "Time"}},
    {"entry",            {"事项", "Entry"}},
    {"bill",             {"单据", "Bill"}},
    {"line",             {"行", "Line"}},
    {"balance",          {"结存", "Balance"}},
    {"by",               {"经手", "By"}},
    {"notices_title",    {"此文件内含的程序库及其许可", "Libraries in this file, and their licences"}},

    {"made",             {"{}（UTC{}）由 vantlo {} 根据 {}（{}）生成", "Made on {} (UTC{}) by vantlo {} from {} ({})"}},
    {"footer",           {"此文件不访问网络，可以存档或邮寄。其中的内容不再变化。", "This file uses no network: keep it or mail it. What it shows does not change any more."}},
    {"goods_count",      {"商品", "Goods"}},
    {"warehouses_count", {"仓库", "Warehouses"}},
    {"rows_count",       {"台账行", "Ledger rows"}},
    {"bills_count",      {"单据", "Bills"}},
    {"negative_count",   {"结存为负", "Below zero"}},
    {"causes",           {"原因", "Causes"}},
    {"cause_count",      {"{}：{} 处", "{}: {:case|cases}"}},
    {"verify_report",    {"verify 的完整报告", "All that verify says"}},
    {"report_is_cut",    {"……报告还有 {} 行；见 vantlo verify。", "... {:line|lines} more: see vantlo verify."}},
    {"not_verified",     {"未能核对：{}", "The ledger could not be verified: {}"}},
    {"by_warehouse",     {"各仓库的库存", "Stock by warehouse"}},
    {"warehouse_caption", {"每个仓库各单位的合计", "The totals of each warehouse, by unit"}},
    {"rows",             {"行数", "Rows"}},
    {"negative_rows",    {"结存为负的行", "Rows below zero"}},
    {"none_negative",    {"没有结存为负的行。", "No row is below zero."}},
    {"more_negative",    {"……还有 {} 行；在台账中勾选“结存为负”。", "... {:row|rows} more: tick \"Below zero\" in the ledger."}},
    {"low_rows",         {"低于最低库存的商品", "Goods below their minimum stock"}},
    {"none_low",         {"没有低于最低库存的商品。", "No goods are below their minimum stock."}},
    {"no_minimum_set",   {"尚未设定最低库存（vantlo minimum）。", "No minimum stock is set (vantlo minimum sets it)."}},
    {"more_low",         {"……还有 {} 行；见 vantlo low。", "... {:row|rows} more: see vantlo low."}},
    {"minimum",          {"最低库存", "Minimum"}},
    {"shortage",         {"缺", "Shortage"}},
    {"journal_since",    {"流水始于 {}；此前已有的库存为期初。", "Since {}, when the journal of movements began; what was there before is opening stock."}},
    {"cards_since",      {"库存卡只含最近 {} 次变动，自 {} 起；更早的计入期初。", "Cards have the newest {:movement|movements} alone, from {} on; earlier ones are in their opening."}},
    {"no_journal",       {"此数据库没有库存流水，因此没有库存卡和图表；vantlo journal on 从现在起记录。", "This database keeps no journal of movements, so there are neither cards nor charts; vantlo journal on begins one."}},
    {"journal_unread",   {"无法读取库存流水，因此没有库存卡和图表：{}", "The journal of movements cannot be read, so there are neither cards nor charts: {}"}},
    {"no_movement",      {"流水开始以来没有变动。", "Nothing has moved since the journal began."}},
    {"months_table",     {"各月数字", "The months in figures"}},
    {"months_caption",   {"各单位每月的期初、收入、发出和期末", "Opening, received, issued and closing of each month, by unit"}},
    {"without_script",   {"未启用脚本：表格照常可读；排序、筛选、库存卡和图表需要脚本。", "Scripts are off: the tables can be read, but sorting, filters, cards and charts need them."}},
};
// clang-format on

}  // namespace

std::span<const PageWord> page_words() { return all_words; }

std::string_view page_word(std::string_view name, Language language) {
    const PageWord* const found = std::ranges::find(all_words, name, &PageWord::name);
    if (found == std::end(all_words)) throw std::logic_error("the page has no text " + std::string(name));
    return found->wording.in(language);
}

}  // namespace vantlo
