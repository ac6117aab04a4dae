#include "tool/commands/file_checks.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <iostream>

#include "bookkeeping/incoming_names.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message import_lost    = {"{} {} 此前已导入，但单据已不在数据库中", "{} {} was imported before, but is no longer stored"};
constexpr Message imported_otherwise = {"{} {} 此前已导入，但内容不同", "{} {} was imported before with other content"};
constexpr Message strict_option  = {"对通常只警告的情况一律拒绝：不明的商品、仓库和单位，不大于 0 的换算率，折合后为 0 的数量",
                                    "Refuse what would only be warned of: unknown goods, warehouses and units, factors of 0 or below, quantities that come to 0"};
constexpr Message unknown_goods  = {"{} 种商品不在商品表中：{}", "goods that are not in the table of goods ({}): {}"};
constexpr Message unknown_warehouses = {"{} 个仓库不在仓库表中：{}", "warehouses that are not in the table of warehouses ({}): {}"};
constexpr Message unknown_units  = {"{} 个不明的单位，将按 1 个基本单位计：{}", "unknown units, which would count as one base unit ({}): {}"};
constexpr Message bad_factors    = {"{} 个单位的换算率不大于 0（0 按 1 计，负数会使收发颠倒）：{}", "units with a factor of 0 or below ({}; 0 counts as 1, a negative factor turns receipts into issues): {}"};
constexpr Message zero_quantities = {"{} 行的数量折合后为 0：{}", "lines whose quantity comes to 0 in base units ({}): {}"};
constexpr Message and_more       = {"……", ", ..."};
constexpr Message separator_of_names = {"、", ", "};
constexpr Message warning_of_files = {"警告：{}", "warning: {}"};
constexpr Message strictly_refused = {"已拒绝（--strict），未过账：\n{}", "refused (--strict), nothing was posted:\n{}"};
constexpr Message value_changes  = {"{} {}：{} 由“{}”改为“{}”", "{} {}: {} \"{}\" becomes \"{}\""};
constexpr Message factor_changes = {"{} {}：{} 由 {} 改为 {}，已有 {} 行单据使用此单位", "{} {}: {} {} becomes {}, with {:stored line|stored lines} in that unit"};
constexpr Message more_changes   = {"……共 {} 处改动", "... {:change|changes} in all"};
constexpr Message factor_in_use  = {"将改变正在使用的单位的换算率：以前的单据冲回时会按新的换算率计算。",
                                    "This changes the factor of a unit in use: bills posted before would be taken back with the new one."};
// clang-format on

}  // namespace words

namespace {

constexpr std::size_t most_names = 10;
constexpr std::size_t most_changes = 20;

std::string list_of(const std::vector<std::string>& names, const CommonOptions& common) {
    const auto first = names.begin();
    const auto last = first + static_cast<std::ptrdiff_t>(std::min(names.size(), most_names));
    const std::string list = fmt::format("{}", fmt::join(first, last, common.say(words::separator_of_names)));
    return names.size() > most_names ? list + common.say(words::and_more) : list;
}

/// The row's key as a file has it.
std::string key_of(const MasterRow& row) {
    std::string key;
    for (const BillColumn& column : row.keys()) {
        key += (key.empty() ? "" : " ") + to_utf8(to_text(row.values.value(column.column)));
    }
    return key;
}

std::string text_of(const MasterChange& change, const CommonOptions& common) {
    const MasterRow& row = *change.row;
    const std::string before = to_utf8(change.before);
    const std::string after = to_utf8(change.after);
    if (change.lines > 0) {
        return common.say(words::factor_changes, row.table->field, key_of(row), change.field, before, after,
                          Count(change.lines));
    }
    return common.say(words::value_changes, row.table->field, key_of(row), change.field, before, after);
}

}  // namespace

std::shared_ptr<FileCheckOptions> add_file_check_options(CLI::App& command, const CommonOptions& common) {
    auto options = std::make_shared<FileCheckOptions>();
    command.add_flag("--strict", options->is_strict, common.say(words::strict_option));
    command.add_flag("--yes", options->says_yes, common.say(words::yes_option));
    return options;
}

void tell_state(ShopReader& reader, const Bill& bill, BillState state) {
    const auto index = static_cast<std::size_t>(&bill - reader.shop().bills.data());
    const auto tell = [&](const Message& wording) {
        const ShopReader::Origin& origin = reader.bill_origins()[index];
        reader.errors().add(*origin.source, origin.offset, wording, bill.kind->name, to_utf8(bill.id),
                            to_utf8(bill.kind->header->name));
    };
    switch (state) {
        case BillState::absent:
        case BillState::imported:
        case BillState::stored: break;
        case BillState::imported_otherwise: tell(words::imported_otherwise); break;
        case BillState::stored_otherwise: tell(words::stored_otherwise); break;
        case BillState::other_kind: tell(words::id_taken); break;
        case BillState::lost: tell(words::import_lost); break;
    }
}

std::optional<std::vector<BillState>> stored_meanwhile(std::span<const Bill* const> bills,
                                                       const CommonOptions& common) {
    if (common.dry_run) return std::nullopt;
    std::vector<Bill> sought;
    for (const Bill* const bill : bills) sought.push_back(*bill);
    try {
        std::vector<BillState> states = states_of(*common.read(), sought);
        const auto absent = static_cast<std::size_t>(std::ranges::count(states, BillState::absent));
        return absent == states.size() ? std::nullopt : std::optional(std::move(states));
    } catch (const Failure&) {
        return std::nullopt;  // the database is what failed
    }
}

void check_names(NativeConnection& database, std::span<const MasterRow> master, std::span<const Bill* const> bills,
                 const FileCheckOptions& options, const CommonOptions& common) {
    const DoubtfulNames doubtful = doubtful_names(database, master, bills);
    std::vector<std::string> found;
    const auto add = [&](const std::vector<std::string>& names, const Message& wording, bool is_told = true) {
        if (!names.empty() && (is_told || options.is_strict))
            found.push_back(common.say(wording, names.size(), list_of(names, common)));
    };
    add(doubtful.goods, words::unknown_goods, doubtful.keeps_goods);
    add(doubtful.warehouses, words::unknown_warehouses, doubtful.keeps_warehouses);
    add(doubtful.units, words::unknown_units, false);  // of these the posting warns
    add(doubtful.factors, words::bad_factors);
    add(doubtful.zero_quantities, words::zero_quantities);
    if (options.is_strict && !found.empty())
        throw TaskError(Reason::refused, common.say(words::strictly_refused, fmt::join(found, "\n")));
    for (const std::string& what : found) {
        std::cerr << "vantlo: " << common.say(words::warning_of_files, what) << '\n';
    }
}

std::optional<ExitCode> master_not_confirmed(NativeConnection& database, std::span<const MasterRow> master,
                                             const FileCheckOptions& options, const CommonOptions& common) {
    const std::vector<MasterChange> changes = master_changes(database, master);
    for (std::size_t i = 0; i < std::min(changes.size(), most_changes); ++i) {
        std::cerr << text_of(changes[i], common) << '\n';
    }
    if (changes.size() > most_changes) std::cerr << common.say(words::more_changes, Count(changes.size())) << '\n';
    const bool is_in_use = std::ranges::any_of(changes, [](const MasterChange& change) { return change.lines > 0; });
    if (!is_in_use || common.dry_run) return std::nullopt;
    return not_confirmed(common, common.say(words::factor_in_use), options.says_yes);
}

}  // namespace vantlo
