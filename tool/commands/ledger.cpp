#include <unistd.h>

#include <iostream>

#include "reports/ledger_list.h"
#include "tool/commands/command.h"
#include "tool/commands/list_options.h"
#include "tool/output/ledger_picture.h"
#include "tool/output/ledger_table.h"
#include "tool/output/replace_file.h"
#include "tool/output/table_output.h"
#include "tool/output/visible.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message ledger_about   = {"显示库存台账", "Show the stock ledger"};
constexpr Message only_warehouse = {"只显示此仓库", "Only this warehouse"};
constexpr Message only_goods     = {"只显示此商品", "Only these goods"};
constexpr Message ledger_example = {"显示仓库 W01 的台账", "Show the ledger of warehouse W01"};
constexpr Message only_class     = {"只显示此类别", "Only this goods class"};
constexpr Message only_status    = {"只显示此状态", "Only this status"};
constexpr Message picture_option = {"改为写入图片文件：.svg 或 .html", "Write a picture instead: an .svg drawing or an .html page"};
constexpr Message ledger_csv_example = {"将台账写成 CSV", "Write the ledger as CSV"};
constexpr Message ledger_picture_example = {"画出各仓库的库存和每日进出", "Draw the stock of each warehouse and the movement by day"};
constexpr Message is_no_picture  = {"{} 已存在，且不是图片文件；未改动", "{} is there and is no such picture; it was left alone"};
constexpr Message picture_name   = {"文件名须以 .svg 或 .html 结尾", "the name of a picture ends with .svg or .html"};
constexpr Message cannot_write   = {"无法写入 {}", "{} cannot be written"};
// clang-format on

}  // namespace words

namespace {

struct Wanted {
    std::string warehouse;
    std::string goods;
    std::string goods_class;
    std::optional<std::int32_t> status;
    ListFormat format;
    std::string picture;

    [[nodiscard]] LedgerFilter filter() const {
        return {from_utf8(warehouse), from_utf8(goods), from_utf8(goods_class), status};
    }
};

void write_rows(const std::vector<LedgerRow>& rows, const ListFormat& format, const CommonOptions& common) {
    if (format.name != "table") {
        write_formatted(list_ledger(rows), {}, format, common);
    } else if (wants_colour(STDOUT_FILENO)) {  // the table's own escapes; those in its cells are spelled out
        std::ostream(unfiltered(std::cout)) << ledger_table(rows, common.language, true) << std::flush;
    } else {
        std::cout << ledger_table(rows, common.language);
    }
}

void write_picture(NativeConnection& database, const Wanted& wanted, const CommonOptions& common) {
    const LedgerPicture picture = read_picture(database, wanted.filter(), common.language);
    const bool is_page = wanted.picture.ends_with(".html");
    const Replaced replaced =
        is_page ? replace_file(wanted.picture, "<!doctype html>", picture_page(picture, common.language))
                : replace_file(wanted.picture, "<svg ", picture_svg(picture, common.language));
    if (replaced == Replaced::is_something_else)
        throw TaskError(Reason::bad_input, common.say(words::is_no_picture, wanted.picture));
    if (replaced == Replaced::not_written)
        throw TaskError(Reason::cannot_write, common.say(words::cannot_write, wanted.picture));
}

ExitCode show_ledger(const CommonOptions& common, const Wanted& wanted) {
    const auto database = common.read();
    if (!wanted.picture.empty()) {
        write_picture(*database, wanted, common);
    } else {
        write_rows(read_ledger(*database, wanted.filter()), wanted.format, common);
    }
    return ExitCode::done;
}

}  // namespace

void add_ledger(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command = add_command(app, common, "ledger", words::ledger_about,
                                          {{"vantlo ledger --warehouse W01", words::ledger_example},
                                           {"vantlo ledger --format csv > ledger.csv", words::ledger_csv_example},
                                           {"vantlo ledger --as-picture stock.svg", words::ledger_picture_example}});
    const auto wanted = std::make_shared<Wanted>();
    command->add_option("--warehouse", wanted->warehouse, common.say(words::only_warehouse));
    command->add_option("--goods", wanted->goods, common.say(words::only_goods));
    command->add_option("--class", wanted->goods_class, common.say(words::only_class));
    command->add_option("--status", wanted->status, common.say(words::only_status));
    add_format_options(*command, common, wanted->format);
    command->add_option("--as-picture", wanted->picture, common.say(words::picture_option))
        ->check([&common](const std::string& name) {
            return name.ends_with(".svg") || name.ends_with(".html") ? "" : common.say(words::picture_name);
        })
        ->type_name("FILE")
        ->excludes(command->get_option("--format"));
    command->callback(
        [&call, wanted] { call.work = [&common = call.common, wanted] { return show_ledger(common, *wanted); }; });
}

}  // namespace vantlo
