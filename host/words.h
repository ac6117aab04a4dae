#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>

#include "automation/error_text.h"

namespace vantlo::host {

/// A text of the program in both its languages (UTF-8), with {fmt}'s places for what varies.
class Wording {
public:
    /// Does not compile for texts with different numbers of places.
    consteval Wording(const char* chinese, const char* english) : chinese_(chinese), english_(english) {
        if (places(chinese) != places(english)) throw std::logic_error("the two languages have different places");
    }

    [[nodiscard]] constexpr const char* in(Language language) const {
        return language == Language::chinese ? chinese_ : english_;
    }

private:
    static constexpr std::ptrdiff_t places(std::string_view text) { return std::ranges::count(text, '{'); }

    const char* chinese_;
    const char* english_;
};

/// The text with its places filled.
template <typename... Values>
std::string say(Language language, const Wording& wording, const Values&... values) {
    return fmt::format(fmt::runtime(wording.in(language)), values...);
}

/// The language of the user's locale: Chinese for every zh, English for all others.
/// Source   the first of LC_ALL, LC_MESSAGES and LANG that is set and not empty, as POSIX orders them.
Language language_of_locale();

/// Every text that the program says of itself, but for those of the component, which are Chinese.
namespace words {

// clang-format off

// Help
inline constexpr Wording about          = {"使商店的库存台账与单据保持一致。", "Keeps a shop's stock ledger in step with its bills."};
inline constexpr Wording usage          = {"用法", "Usage"};
inline constexpr Wording arguments      = {"参数", "Arguments"};
inline constexpr Wording options        = {"选项", "Options"};
inline constexpr Wording option_badge   = {"选项", "OPTIONS"};
inline constexpr Wording command_badge  = {"命令", "COMMAND"};
inline constexpr Wording commands       = {"命令", "Commands"};
inline constexpr Wording examples       = {"示例", "Examples"};
inline constexpr Wording required       = {"（必填）", "(required)"};
inline constexpr Wording help_option    = {"显示此帮助并退出", "Show this help and exit"};
inline constexpr Wording version_option = {"显示版本、数据库引擎和驱动程序并退出", "Show the versions of the program, the engine and its driver, and exit"};
inline constexpr Wording db_option      = {"数据库：SQLite 文件、sqlite:文件，或 ODBC 连接字符串；集群的每个节点写一次。缺省为环境变量 VANTLO_DB，再缺省为 vantlo.db",
                                           "Database: an SQLite file, sqlite:FILE, or an ODBC connection string; once for each node of a cluster. By default the environment's VANTLO_DB, else vantlo.db"};
inline constexpr Wording show_sql_option = {"在标准错误上显示每条发出的语句", "Show every statement on stderr as it is sent"};
inline constexpr Wording lang_option    = {"语言：zh 或 en；缺省取自区域设置", "Language: zh or en; by default that of the locale"};
inline constexpr Wording exit_codes     = {
    "退出码：0 完成，1 过账失败，2 命令行有误，3 台账与单据不符，4 数据库不可用，\n5 输入有误，6 被中断，7 被拒绝。",
    "Exit codes: 0 done, 1 posting failed, 2 wrong command line, 3 the ledger differs,\n4 no database, 5 bad input, 6 interrupted, 7 refused."};

inline constexpr Wording main_footer     = {
    "每个命令都有自己的帮助和示例：vantlo save --help",
    "Every command has help and examples of its own: vantlo save --help"};

inline constexpr Wording command_footer   = {
    "对所有命令都有效的选项见 vantlo --help。",
    "The options of every command: vantlo --help."};

inline constexpr Wording manual_name    = {"名称", "NAME"};
inline constexpr Wording manual_exit_status = {"退出码", "EXIT STATUS"};
inline constexpr Wording manual_environment = {"环境变量", "ENVIRONMENT"};
inline constexpr Wording environment_db = {"数据库，未给出 --db 时使用", "The database, where --db names none"};
inline constexpr Wording environment_password = {"补入没有密码的 ODBC 连接字符串的密码", "The password for an ODBC connection string without one"};
inline constexpr Wording environment_colour = {"非空时表格不用颜色", "If it is not empty, tables are not coloured"};
inline constexpr Wording environment_language = {"其中第一个有值的以 zh 开头时使用中文", "Chinese, if the first of them that is set begins with zh; else English"};

inline constexpr Wording init_about     = {"建立缺少的数据表", "Make the tables that are missing"};
inline constexpr Wording unique_key_option = {"禁止同一键有两行台账；多个主机同时记账时使用", "Forbid two ledger rows of one key; for several hosts at once"};
inline constexpr Wording init_example   = {"在 shop.db 中建立数据表", "Make the tables in shop.db"};
inline constexpr Wording init_dry_run_option = {"只显示将执行的语句", "Only show the statements"};
inline constexpr Wording save_about     = {"保存单据并过账", "Store bills and post them"};
inline constexpr Wording save_files     = {"含基础资料和单据的 JSON 文件", "JSON files of master data and bills"};
inline constexpr Wording save_example   = {"保存文件中的单据，每张单据一个事务", "Save the bills of a file, each in a transaction of its own"};
inline constexpr Wording save_sql_example = {"同时显示发出的每条语句", "Show every statement beside it"};
inline constexpr Wording save_dry_example = {"只显示会发生什么", "Show what would happen"};
inline constexpr Wording import_about   = {"从文件导入基础资料和单据，先全部检查", "Take over master data and bills from files, all checked first"};
inline constexpr Wording import_files   = {"含基础资料和单据的文件：.csv、.jsonl 或 .json", "Files of master data and bills: .csv, .jsonl or .json"};
inline constexpr Wording import_example = {"导入商品、单位和单据", "Import goods, units and bills"};
inline constexpr Wording import_gb_example = {"导入电子表格以 GB18030 编码保存的单据", "Import bills that a spreadsheet has written in GB18030"};
inline constexpr Wording encoding_option = {"文件的编码：utf-8 或 gb18030", "Encoding of the files: utf-8 or gb18030"};
inline constexpr Wording table_option   = {"CSV 文件的行是什么（文件不以此命名时）：warehouses、goods 或 units", "What the rows of a CSV file are that is not named after it: warehouses, goods or units"};
inline constexpr Wording delete_about   = {"冲回一张已保存的单据并删除它", "Take a stored bill back and delete it"};
inline constexpr Wording bill_kind      = {"单据种类", "Kind of bill"};
inline constexpr Wording bill_id        = {"单据编号", "The bill's identifier"};
inline constexpr Wording delete_example = {"冲回入库单 R1001", "Take the stock-in bill R1001 back"};
inline constexpr Wording ledger_about   = {"显示库存台账", "Show the stock ledger"};
inline constexpr Wording only_warehouse = {"只显示此仓库", "Only this warehouse"};
inline constexpr Wording only_goods     = {"只显示此商品", "Only these goods"};
inline constexpr Wording ledger_example = {"显示仓库 W01 的台账", "Show the ledger of warehouse W01"};
inline constexpr Wording verify_about   = {"将台账与单据逐行核对；不符时退出码为 3", "Compare the ledger row by row with what the bills make of it; exit code 3 if they differ"};
inline constexpr Wording verify_example = {"核对 vantlo.db 的台账", "Verify the ledger of vantlo.db"};
inline constexpr Wording repair_about   = {"打印使台账与单据相符的 SQL 语句；--apply 则直接执行", "Print the SQL that sets the ledger right; with --apply, run it"};
inline constexpr Wording repair_example = {"只写出语句，供查看后执行", "Write the statements only, to be read first"};
inline constexpr Wording repair_apply   = {"在一个事务中执行，各行的前后数量记入 RepairJournal", "Run it in one transaction, and enter each row before and after into RepairJournal"};
inline constexpr Wording repair_apply_example = {"执行，并再次核对", "Run them, and verify again"};

inline constexpr Wording only_class     = {"只显示此类别", "Only this goods class"};
inline constexpr Wording only_status    = {"只显示此状态", "Only this status"};
inline constexpr Wording format_option  = {"输出格式：table、json、jsonl 或 csv", "Output: table, json, jsonl or csv"};
inline constexpr Wording picture_option = {"改为写入图片文件：.svg 或 .html", "Write a picture instead: an .svg drawing or an .html page"};
inline constexpr Wording ledger_csv_example = {"将台账写成 CSV", "Write the ledger as CSV"};
inline constexpr Wording ledger_picture_example = {"画出各仓库的库存和每日进出", "Draw the stock of each warehouse and the movement by day"};
inline constexpr Wording bill_about     = {"显示一张已保存的单据以及它对台账的影响", "Show a stored bill and the ledger rows that it moves"};
inline constexpr Wording bill_example   = {"显示入库单 R1001", "Show the stock-in bill R1001"};
inline constexpr Wording explain_about  = {"说明组件的一个过账成员", "Explain a posting member of the component"};
inline constexpr Wording explain_example = {"说明 In_AddInventory", "Explain In_AddInventory"};
inline constexpr Wording explain_list_example = {"列出所有过账成员", "List all posting members"};
inline constexpr Wording member_name    = {"成员名称；省略时列出全部", "The member's name; without it all are listed"};

// What was done
inline constexpr Wording tables_ready   = {"数据表已齐备（{}）。", "The tables are there ({})."};
inline constexpr Wording saved          = {"已保存 {} 张单据，共 {} 行。", "Saved {} bills with {} lines."};
inline constexpr Wording would_import   = {"将导入 {} 行基础资料和 {} 张单据，共 {} 行；另有 {} 张单据此前已导入；未写入任何数据。",
                                           "Would import {} rows of master data and {} bills with {} lines; {} bills were imported before. Nothing was written."};
inline constexpr Wording imported       = {"已导入 {} 行基础资料和 {} 张单据，共 {} 行；另有 {} 张单据此前已导入。",
                                           "Imported {} rows of master data and {} bills with {} lines; {} bills were imported before."};
inline constexpr Wording taken_back     = {"已冲回 {} {}。", "Took {} {} back."};
inline constexpr Wording repaired       = {"已修复 {} 个键的台账行，前后数量记在 RepairJournal。", "Repaired the rows of {} keys; RepairJournal has them before and after."};
inline constexpr Wording nothing_to_repair = {"没有需要修复的行。", "There is nothing to repair."};

// What was not
inline constexpr Wording interrupted_at = {"已中断：已保存 {} 张单据，共 {} 行；{} {} 已回滚，其后的单据未处理。",
                                           "Interrupted: {} bills with {} lines were saved; {} {} was rolled back, and none after it begun."};
inline constexpr Wording interrupted_rehearsal = {"已中断；未写入任何数据。", "Interrupted; nothing was written."};
inline constexpr Wording repair_failed  = {"修复后台账仍与单据不符；已全部回滚", "the ledger would still differ from the bills; all was rolled back"};
inline constexpr Wording import_interrupted = {"已中断：已导入 {} 张单据，共 {} 行，还剩 {} 张；正在处理的已回滚。再次运行同一命令即可继续。",
                                           "Interrupted: {} bills with {} lines were imported, {} are left, and what was begun is rolled back. The same command goes on from there."};
inline constexpr Wording import_stopped = {"已导入 {} 张单据，共 {} 行，还剩 {} 张。改正后再次运行同一命令即可继续。",
                                           "{} bills with {} lines were imported, {} are left. Once this is put right, the same command goes on from there."};
inline constexpr Wording imported_otherwise = {"{} {} 此前已导入，但内容不同", "{} {} was imported before with other content"};
inline constexpr Wording stored_otherwise = {"{} {}：已有此编号的单据，且不是由导入保存的", "{} {}: a bill with this id is stored already, and not by an import"};
inline constexpr Wording import_lost    = {"{} {} 此前已导入，但单据已不在数据库中", "{} {} was imported before, but is no longer stored"};
inline constexpr Wording unknown_kind   = {"没有“{}”这种单据；单据种类有", "there is no kind of bill \"{}\"; the kinds are"};
inline constexpr Wording password_shown = {"命令行参数中不得有密码，本机的其他用户都能看到；请放入环境变量 VANTLO_PASSWORD，或将整个连接字符串放入 VANTLO_DB",
                                           "no passwords in arguments, where everybody on the machine can read them: put it into the environment's VANTLO_PASSWORD, or the whole connection string into VANTLO_DB"};
inline constexpr Wording something_missing = {"缺少参数或命令（{}）", "something is missing ({})"};
inline constexpr Wording something_unknown = {"不认识的参数或命令（{}）", "something is unknown ({})"};
inline constexpr Wording bad_value      = {"值无效（{}）", "a value is wrong ({})"};
inline constexpr Wording see_help       = {"运行 {} --help 查看用法。", "Run {} --help for more."};

// What is wrong with a file
inline constexpr Wording file_unreadable = {"无法读取此文件", "the file cannot be read"};
inline constexpr Wording file_is_utf16  = {"此文件是 UTF-16；请另存为 UTF-8", "the file is UTF-16; save it as UTF-8"};
inline constexpr Wording no_conversion  = {"本系统不能转换 {}", "this system converts no {}"};
inline constexpr Wording byte_no_utf8   = {"字节 0x{:02X} 不是 UTF-8；GB18030 编码的文件请加 --encoding gb18030", "the byte 0x{:02X} is no UTF-8; for a file in GB18030, say --encoding gb18030"};
inline constexpr Wording byte_no_gb18030 = {"字节 0x{:02X} 不是 GB18030", "the byte 0x{:02X} is no GB18030"};
inline constexpr Wording more_errors    = {"……另有 {} 处错误", "... and {} more errors"};
inline constexpr Wording no_json        = {"这不是 JSON：{}", "this is no JSON: {}"};
inline constexpr Wording nested_too_deeply = {"嵌套过深", "this is nested too deeply"};
inline constexpr Wording lone_return    = {"单独的回车符不能结束一行", "a carriage return alone ends no line"};
inline constexpr Wording stray_quote    = {"未加引号的值中有引号", "a quote inside a value that is not quoted"};
inline constexpr Wording text_after_quote = {"右引号之后还有文字", "text after the closing quote"};
inline constexpr Wording no_closing_quote = {"缺少右引号", "the closing quote is missing"};
inline constexpr Wording no_table_named = {
    "应有“bill.kind”和“bill.id”两列，或文件以其数据表命名（warehouses、goods、units），或使用 --table；没有数据表“{}”",
    "columns \"bill.kind\" and \"bill.id\" are expected, or a file named after its table (warehouses, goods, units), or --table; \"{}\" is no table"};
inline constexpr Wording unknown_column = {"没有“{}”这一列", "unknown column \"{}\""};
inline constexpr Wording column_twice   = {"“{}”列出现了两次", "the column \"{}\" is given twice"};
inline constexpr Wording column_missing = {"缺少“{}”列", "the column \"{}\" is missing"};
inline constexpr Wording values_of_row  = {"此行有 {} 个值，但共有 {} 列", "the row has {} values, but there are {} columns"};
inline constexpr Wording differs_in_bill = {"bill.{}：“{}”与单据第一行的“{}”不同", "bill.{}: \"{}\" differs from \"{}\" in the bill's first row"};
inline constexpr Wording unknown_part   = {"没有“{}”这一部分", "unknown part \"{}\""};
inline constexpr Wording unknown_table  = {"没有数据表 {}", "unknown table {}"};
inline constexpr Wording unknown_bill   = {"没有单据种类 {}", "unknown kind of bill {}"};
inline constexpr Wording unknown_field  = {"没有“{}”这个字段", "unknown field \"{}\""};
inline constexpr Wording field_twice    = {"字段“{}”出现了两次", "the field \"{}\" is given twice"};
inline constexpr Wording field_missing  = {"缺少“{}”", "\"{}\" is missing"};
inline constexpr Wording field_empty    = {"“{}”为空", "\"{}\" is empty"};
inline constexpr Wording no_bill_lines  = {"单据没有行", "the bill has no lines"};
inline constexpr Wording given_twice    = {"{} 出现了两次；前一次在 {}:{}:{}", "{} is given twice; it stands at {}:{}:{} already"};
inline constexpr Wording object_expected = {"此处应为对象，而不是{}", "an object is expected, not {}"};
inline constexpr Wording list_expected  = {"{}：应为列表，而不是{}", "{}: a list is expected, not {}"};
inline constexpr Wording date_expected  = {"{}：应为 2024-03-05 这样的日期，而不是{}", "{}: a date like 2024-03-05 is expected, not {}"};
inline constexpr Wording text_expected  = {"{}：应为文字，而不是{}", "{}: a text is expected, not {}"};
inline constexpr Wording number_expected = {"{}：应为数字，而不是{}", "{}: a number is expected, not {}"};
inline constexpr Wording whole_number_expected = {"{}：应为整数，而不是{}", "{}: a whole number is expected, not {}"};
inline constexpr Wording text_with_nul  = {"{}：文字中有 NUL 字符", "{}: the text contains the character NUL"};
inline constexpr Wording text_too_long  = {"{}：有 {} 个字符，只能保存 {} 个：{}", "{}: {} characters, where only {} are kept: {}"};
inline constexpr Wording number_too_large = {"{}：{} 太大", "{}: {} is too large"};
inline constexpr Wording number_inexact = {"{}：{} 会保存为 {}", "{}: {} would be kept as {}"};
inline constexpr Wording number_outside = {"{}：{} 不在 {} 到 {} 之间", "{}: {} is outside {} to {}"};
inline constexpr Wording a_list         = {"列表", "a list"};
inline constexpr Wording an_object      = {"对象", "an object"};
inline constexpr Wording quoted         = {"“{}”", "\"{}\""};
inline constexpr Wording quoted_and_cut = {"“{}……”", "\"{}...\""};

// What the guard says
inline constexpr Wording warning        = {"警告：{}：{}", "warning: {}: {}"};
inline constexpr Wording null_quantity  = {"第 {} 行没有数量", "line {} has no quantity"};
inline constexpr Wording null_header    = {"表头没有数量", "the header has no quantity"};
inline constexpr Wording unknown_unit   = {"商品 {} 没有单位“{}”，按 1 个基本单位计", "goods {} have no unit \"{}\": it counts as one base unit"};
inline constexpr Wording negative_stock = {"{} 的结存将变为 {}", "{} goes to {} on hand"};
inline constexpr Wording comment_in_statement = {
    "数量为负：两个减号之后的部分连同 WHERE 子句都会被当作注释，每一行台账都会改变（--force 仍然执行）：{}",
    "the quantity is negative, so that everything behind the two minus signs would be a comment, the WHERE clause too, and every row of the ledger would change (--force sends it all the same): {}"};
inline constexpr Wording force_option   = {"即使语句会改变每一行台账也执行", "Send even a statement that changes every row of the ledger"};
inline constexpr Wording negative_option = {"拒绝使结存变为负数的单据", "Refuse bills that take stock below zero"};
inline constexpr Wording dry_run_option = {"只显示将发出的语句以及台账的前后变化，不写入任何数据", "Show the statements and what they change in the ledger, and write nothing"};

// A dry run
inline constexpr Wording change_of_row  = {"{}：收入 {} → {}，发出 {} → {}，结存 {} → {}", "{}: received {} → {}, issued {} → {}, on hand {} → {}"};
inline constexpr Wording nothing        = {"无", "none"};
inline constexpr Wording would_save     = {"将保存 {} 张单据，共 {} 行；未写入任何数据。", "Would save {} bills with {} lines; nothing was written."};
inline constexpr Wording would_take_back = {"将冲回 {} {}；未写入任何数据。", "Would take {} {} back; nothing was written."};
// Progress
inline constexpr Wording progress       = {"{} {:3}%  {}/{} 行  {} 行/秒  剩余 {}", "{} {:3}%  {} of {} lines  {} a second  {} left"};

// The ledger
inline constexpr Wording key_with_status = {"{} 状态 {}", "{}, status {}"};
inline constexpr Wording warehouse      = {"仓库", "Warehouse"};
inline constexpr Wording goods          = {"商品", "Goods"};
inline constexpr Wording model1         = {"型号一", "Model 1"};
inline constexpr Wording model2         = {"型号二", "Model 2"};
inline constexpr Wording status         = {"状态", "Status"};
inline constexpr Wording received       = {"收入", "Received"};
inline constexpr Wording issued         = {"发出", "Issued"};
inline constexpr Wording on_hand        = {"结存", "On hand"};
inline constexpr Wording total_of_rows  = {"合计 {} 行", "Total of {} rows"};

inline constexpr Wording quantity       = {"数量", "Quantity"};
inline constexpr Wording moved_row      = {"台账变动", "Ledger row moved"};
inline constexpr Wording cannot_write   = {"无法写入 {}", "{} cannot be written"};

// What explain says
inline constexpr Wording unknown_member = {"没有成员“{}”；运行 vantlo explain 列出全部", "there is no member \"{}\"; vantlo explain lists them"};
inline constexpr Wording posts_a_line   = {"对一行单据过账：", "For one line of a bill, it moves:"};
inline constexpr Wording posts_a_bill   = {"对一张已保存单据的每一行过账：", "For each line of a stored bill, it moves:"};
inline constexpr Wording called_for     = {"用于：", "Called for"};
inline constexpr Wording to_post        = {"过账", "to post it"};
inline constexpr Wording to_take_back   = {"冲回", "to take it back"};
inline constexpr Wording status_of_bill = {"表头的 ReferFlag", "the bill's ReferFlag"};
inline constexpr Wording status_of_line = {"行上的状态", "the line's own"};
inline constexpr Wording status_of_source = {"转换前", "before the conversion"};
inline constexpr Wording status_of_target = {"转换后", "after the conversion"};
inline constexpr Wording in_base_units  = {"基本单位", "in base units"};
inline constexpr Wording as_it_stands   = {"行上的数量", "as it stands"};
inline constexpr Wording as_it_stands_when_new = {"基本单位；新行按行上的数量", "in base units; as it stands on a new row"};
inline constexpr Wording base_units_when_new = {"行上的数量；新行按基本单位", "as it stands; in base units on a new row"};

// The picture
inline constexpr Wording picture_title  = {"库存台账", "Stock ledger"};
inline constexpr Wording picture_units  = {"全部商品合计，基本单位", "All goods together, in base units"};
inline constexpr Wording picture_stock  = {"各仓库结存", "On hand by warehouse"};
inline constexpr Wording picture_course = {"各仓库结存的变化", "On hand over time"};
inline constexpr Wording picture_movement = {"每日收发", "Movement by day"};
inline constexpr Wording picture_more   = {"另有 {} 个仓库", "and {} warehouses more"};

// What verify reports
inline constexpr Wording ledger_agrees  = {"台账与单据相符：单据 {} 张，台账 {} 行。",
                                           "The ledger agrees with the bills: {} bills, {} ledger rows."};
inline constexpr Wording ledger_differs = {"台账与单据不符：原因 {} 种，{} 处，台账 {} 行。",
                                           "The ledger differs from the bills: causes {}, cases {}, ledger rows {}."};
inline constexpr Wording stored_row     = {"台账", "ledger"};
inline constexpr Wording expected_row   = {"单据", "bills "};
inline constexpr Wording no_row         = {"无此行", "no such row"};
inline constexpr Wording amounts        = {"收入 {}  发出 {}  结存 {}", "received {}  issued {}  on hand {}"};
inline constexpr Wording null_amount    = {"空", "null"};
inline constexpr Wording touched_by     = {"涉及单据：", "touched by "};
inline constexpr Wording more_bills     = {" 等 {} 张", " and others, {} in all"};
inline constexpr Wording no_bills       = {"没有单据", "no bill"};
inline constexpr Wording took_back      = {"（冲回）", " (taken back)"};
inline constexpr Wording notes_follow   = {"另请留意（不算不符）：", "Worth a look, though ledger and bills agree in it:"};
inline constexpr Wording more_of_them   = {"……共 {} 处", "... {} in all"};
inline constexpr Wording steps_there    = {"前 {} 步已过账，共 {} 步", "the first {} of {} statements are there"};

// clang-format on

}  // namespace words

}  // namespace vantlo::host
