#include <iostream>

#include "ado/odbc/connection_string.h"
#include "output/replace_file.h"
#include "tool/commands/command.h"
#include "tool/page/stock_page.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message page_about     = {"将库存写成一个可打印、可邮寄的网页文件", "Write the stock as one page for a browser, to print or to mail"};
constexpr Message page_file      = {"网页的文件名，以 .html 结尾", "The file to write, which ends with .html"};
constexpr Message page_movements = {"库存卡最多含这么多次最近的变动", "So many of the newest movements on the cards at most"};
constexpr Message page_example   = {"写出网页，然后用浏览器打开", "Write the page, and open it in a browser"};
constexpr Message page_in_chinese = {"中文网页", "The page in Chinese"};
constexpr Message page_name      = {"文件名须以 .html 结尾", "the name of a page ends with .html"};
constexpr Message is_no_page     = {"{} 已存在，且不是这样的网页；未改动", "{} is there and is no such page; it was left alone"};
constexpr Message page_written   = {"已写入 {}，请用浏览器打开。", "Written to {}: open it in a browser."};
constexpr Message page_not_written = {"无法写入 {}", "{} cannot be written"};
// clang-format on

}  // namespace words

namespace {

struct Wanted {
    std::string file;
    std::int64_t movements = 50'000;
};

/// What people call the database: its file, or the connection string without a password.
std::string database_name(const CommonOptions& common) {
    constexpr std::string_view sqlite = "sqlite:";
    const std::string text = common.connection_texts().front();
    return text.starts_with(sqlite) ? text.substr(sqlite.size()) : without_password(text, text);
}

ExitCode write_page(const CommonOptions& common, const Wanted& wanted) {
    const auto database = common.read();
    const StockPage page = read_stock_page(*database, wanted.movements, common.language);
    switch (replace_file(wanted.file, page_beginning,
                         page_html(page, database_name(common), VANTLO_VERSION, common.language))) {
        case Replaced::is_something_else:
            throw TaskError(Reason::bad_input, common.say(words::is_no_page, wanted.file));
        case Replaced::not_written:
            throw TaskError(Reason::cannot_write, common.say(words::page_not_written, wanted.file));
        case Replaced::done: break;
    }
    std::clog << common.say(words::page_written, wanted.file) << '\n';
    return ExitCode::done;
}

}  // namespace

void add_page(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command = add_command(
        app, common, "page", words::page_about,
        {{"vantlo page stock.html", words::page_example}, {"vantlo --lang zh page 库存.html", words::page_in_chinese}});
    const auto wanted = std::make_shared<Wanted>();
    command->add_option("FILE", wanted->file, common.say(words::page_file))
        ->required()
        ->check(
            [&common](const std::string& name) { return name.ends_with(".html") ? "" : common.say(words::page_name); });
    command->add_option("--movements", wanted->movements, common.say(words::page_movements))
        ->check(CLI::Range(std::int64_t{0}, std::int64_t{100'000'000}))
        ->type_name("NUMBER");
    command->callback(
        [&call, wanted] { call.work = [&common = call.common, wanted] { return write_page(common, *wanted); }; });
}

}  // namespace vantlo
