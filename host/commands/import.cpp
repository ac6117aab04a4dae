#include <iostream>
#include <map>

#include "host/commands/command.h"
#include "host/import/shop_reader.h"

namespace vantlo::host {

namespace {

struct ImportOptions {
    std::vector<std::string> paths;
    FileOptions files;
};

ExitCode import(const CommonOptions& common, const ImportOptions& options) {
    ShopReader reader;
    for (const std::string& path : options.paths) reader.read(path, options.files);
    reader.errors().raise();
    const ShopFile& shop = reader.shop();
    Bookkeeping bookkeeping = common.bookkeeping();
    if (!shop.master.empty()) bookkeeping.save_master(shop.master);
    for (const Bill& bill : shop.bills) bookkeeping.save(bill);
    std::cerr << common.say(common.dry_run ? words::would_import : words::imported, shop.master.size(),
                            shop.bills.size())
              << '\n';
    return ExitCode::done;
}

}  // namespace

void add_import(CLI::App& app, Invocation& invocation) {
    CommonOptions& common = invocation.common;
    CLI::App* const command = add_command(app, common, "import", words::import_about,
                                          {{"vantlo import goods.csv units.csv bills.csv", words::import_example},
                                           {"vantlo import --encoding gb18030 bills.csv", words::import_gb_example}});
    const auto options = std::make_shared<ImportOptions>();
    command->add_option("FILE", options->paths, common.say(words::import_files))->required();
    command->add_option("--encoding", options->files.encoding, common.say(words::encoding_option))
        ->transform(
            CLI::Transformer(std::map<std::string, Encoding>{{"utf-8", Encoding::utf8}, {"gb18030", Encoding::gb18030}},
                             CLI::ignore_case))
        ->default_str("utf-8");
    command->add_option("--table", options->files.table, common.say(words::table_option));
    add_posting_options(*command, common);
    command->callback([&invocation, options] {
        invocation.work = [&common = invocation.common, options] { return import(common, *options); };
    });
}

}  // namespace vantlo::host
