#include <iostream>

#include "bookkeeping/stored_bill.h"
#include "tool/commands/command.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message delete_about   = {"冲回一张已保存的单据并删除它", "Take a stored bill back and delete it"};
constexpr Message delete_example = {"冲回入库单 R1001", "Take the stock-in bill R1001 back"};
constexpr Message taken_back     = {"已冲回 {} {}。", "Took {} {} back."};
constexpr Message would_take_back = {"将冲回 {} {}；未写入任何数据。", "Would take {} {} back; nothing was written."};
// clang-format on

}  // namespace words

namespace {

struct Named {
    std::string kind;
    std::string id;
};

ExitCode reverse(const CommonOptions& common, const Named& bill) {
    const BillKind* const kind = known_kind(common, bill.kind);
    if (kind == nullptr) return ExitCode::usage;
    const Text id = from_utf8(bill.id);
    const std::optional<Bill> stored = common.dry_run ? stored_bill(*common.read(), *kind, id) : std::nullopt;
    std::vector<const Bill*> copied;
    if (stored) copied.push_back(&*stored);
    common.bookkeeping({}, copied).reverse(*kind, id);
    std::clog << common.say(common.dry_run ? words::would_take_back : words::taken_back, kind->name, bill.id) << '\n';
    return ExitCode::done;
}

}  // namespace

void add_delete(CLI::App& app, CommandCall& call) {
    CommonOptions& common = call.common;
    CLI::App* const command = add_command(app, common, "delete", words::delete_about,
                                          {{"vantlo delete stock-in R1001", words::delete_example}});
    const auto bill = std::make_shared<Named>();
    command->add_option("KIND", bill->kind, common.say(words::bill_kind))->required();
    command->add_option("ID", bill->id, common.say(words::bill_id))->required();
    add_posting_options(*command, common);
    command->callback([&call, bill] { call.work = [&common = call.common, bill] { return reverse(common, *bill); }; });
}

}  // namespace vantlo
