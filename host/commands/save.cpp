#include <fmt/format.h>

#include <iostream>

#include "host/commands/command.h"

namespace vantlo::host {

namespace {

ExitCode save(const CommonOptions& common, const std::vector<std::string>& paths) {
    std::vector<ShopFile> files;
    for (const std::string& path : paths) files.push_back(read_shop_file(path));
    Bookkeeping bookkeeping = common.bookkeeping();
    std::size_t bills = 0, lines = 0;
    for (const ShopFile& file : files) {
        if (!file.master.empty()) bookkeeping.save_master(file.master);
        for (const Bill& bill : file.bills) {
            bookkeeping.save(bill);
            ++bills;
            lines += bill.lines.size();
        }
    }
    std::cerr << fmt::format("Saved {} bills with {} lines.\n", bills, lines);
    return ExitCode::done;
}

}  // namespace

void add_save(CLI::App& app, Invocation& invocation) {
    CLI::App* const command = app.add_subcommand("save", "Store bills and post them");
    const auto paths = std::make_shared<std::vector<std::string>>();
    command->add_option("FILE", *paths, "JSON files of master data and bills")->required();
    command->callback([&invocation, paths] {
        invocation.work = [&common = invocation.common, paths] { return save(common, *paths); };
    });
}

}  // namespace vantlo::host
