#include "tool/commands/exit_code.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>

#include "automation/message.h"

namespace vantlo {

namespace {

struct ExitCodeRow {
    ExitCode code;
    std::optional<Reason> reason;  ///< the one that ends with this code
    Message meaning;
};

// The help, the manual page and docs/tool.md show these rows.
// clang-format off
constexpr ExitCodeRow exit_codes[] = {
    {ExitCode::done,           {},                     {"完成", "done"}},
    {ExitCode::posting_failed, Reason::posting_failed, {"过账失败；该单据未留下任何内容", "a posting failed; nothing of its bill was left behind"}},
    {ExitCode::usage,          {},                     {"命令行有误", "the command line is wrong"}},
    {ExitCode::differs,        {},                     {"台账与单据不符", "the ledger does not hold what the bills say"}},
    {ExitCode::no_database,    {},                     {"数据库无法打开，或拒绝了过账之外的语句", "the database cannot be opened, or refused a statement outside a posting"}},
    {ExitCode::bad_input,      Reason::bad_input,      {"文件有误，未过账任何内容", "a file cannot be taken as it is; nothing of it was posted"}},
    {ExitCode::interrupted,    Reason::interrupted,    {"被中断：正在处理的单据已回滚，之前的保留", "interrupted: the bill at hand was rolled back, those before it stay"}},
    {ExitCode::refused,        Reason::refused,        {"过账前被拒绝", "refused before anything was posted"}},
    {ExitCode::no_such_bill,   Reason::no_such_bill,   {"没有这张单据", "there is no such bill"}},
    {ExitCode::cannot_write,   Reason::cannot_write,   {"文件或标准输出无法写入", "a file or stdout cannot be written"}},
    {ExitCode::internal_error, {},                     {"内存不足，或程序自身有缺陷", "memory ran out, or the program has a defect"}},
};
// clang-format on
static_assert(std::ranges::equal(exit_codes, std::to_array({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}), {},
                                 [](const ExitCodeRow& row) { return static_cast<int>(row.code); }));
static_assert(std::ranges::count_if(exit_codes, [](const ExitCodeRow& row) { return row.reason.has_value(); }) ==
              static_cast<int>(Reason::cannot_write) + 1);

}  // namespace

ExitCode exit_code_of(Reason reason) {
    return std::ranges::find(exit_codes, std::optional(reason), &ExitCodeRow::reason)->code;
}

std::string exit_code_list(Language language, const char* before, const char* between, const char* after) {
    std::string list;
    for (const ExitCodeRow& row : exit_codes) {
        list += before + std::to_string(static_cast<int>(row.code)) + between + row.meaning.in(language) + after;
    }
    return list;
}

}  // namespace vantlo
