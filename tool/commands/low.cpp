#include <iostream>

#include "ado/native/snapshot.h"
#include "automation/number_text.h"
#include "bills/schema.h"
#include "dataaccess/sql_literals.h"
#include "reports/minimums.h"
#include "tool/commands/command.h"
#include "tool/commands/list_options.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message low_about       = {"哪些商品低于最低库存，缺多少", "Goods below their minimum stock, and how much is missing"};
constexpr Message low_example     = {"仓库 W01 中低于最低库存的商品", "What runs low in warehouse W01"};
constexpr Message low_all_example = {"所有最低库存", "All minimums"};
constexpr Message low_all         = {"足够的也列出", "Those too of which there is enough"};
constexpr Message only_goods      = {"只看此商品；* 和 ? 为通配符，可写多次", "Only these goods; * and ? stand for any signs, may be given several times"};
constexpr Message only_warehouse  = {"只看此仓库的最低库存；写法同上", "Only minimums of this warehouse; patterns as above"};
constexpr Message minimum_about   = {"设定商品的最低库存（再订货点）", "Set the minimum stock of goods, their reorder level"};
constexpr Message minimum_example = {"各仓库合计至少 20 个 G001", "At least 20 of G001, all warehouses together"};
constexpr Message minimum_warehouse_example = {"W01 中至少 5 个；0 表示不再限制", "At least 5 in W01 alone; 0 is no minimum any more"};
constexpr Message minimum_goods   = {"商品编号", "The goods' id"};
constexpr Message minimum_quantity = {"最低库存，按基本单位", "The minimum, in base units"};
constexpr Message minimum_warehouse = {"只限此仓库；缺省为所有仓库合计", "In this warehouse alone; else in all of them together"};
constexpr Message minimum_model1  = {"只限此型号一；缺省为全部", "Of this model 1 alone; else of all"};
constexpr Message minimum_model2  = {"只限此型号二；缺省为全部", "Of this model 2 alone; else of all"};
constexpr Message minimum_status  = {"在此状态下；缺省为 0，即普通库存", "In this status; 0 by default, ordinary stock"};
constexpr Message no_minimums     = {"没有表 StockMinimum；vantlo init 建立", "there is no table StockMinimum: vantlo init makes it"};
constexpr Message nothing_set     = {"尚未设定最低库存；vantlo minimum 或 vantlo import minimums.csv 设定。", "no minimum is set yet: vantlo minimum, or vantlo import minimums.csv, sets them."};
constexpr Message no_such_goods   = {"没有商品“{}”", "there are no goods \"{}\""};
constexpr Message no_such_warehouse = {"没有仓库“{}”", "there is no warehouse \"{}\""};
constexpr Message minimum_is_set  = {"{} 的最低库存：{}", "{}: minimum stock {}"};
constexpr Message minimum_negative = {"最低库存不能为负", "a minimum is not negative"};
// clang-format on

}  // namespace words

namespace {

void require_minimums(NativeConnection& database, const CommonOptions& common) {
    if (!has_table(database, "StockMinimum")) throw TaskError(Reason::refused, common.say(words::no_minimums));
}

ExitCode show_low(const CommonOptions& common, const MinimumsWanted& wanted, const ListOptions& options) {
    const auto database = common.read();
    require_minimums(*database, common);
    const Snapshot snapshot(*database);
    if (database->execute(u"select GId from StockMinimum where Minimum>0")->eof())
        std::cerr << "vantlo: " << common.say(words::nothing_set) << '\n';
    return write_list(list_minimums(*database, wanted), options, common);
}

struct Minimum {
    std::string goods, warehouse, model1, model2;
    std::int32_t status = 0;
    float quantity = 0;
};

/// Refuses an id that neither its table nor the ledger knows.
void require_known(NativeConnection& database, const char16_t* table, const char16_t* ledger_column,
                   const std::string& id, const Message& unknown, const CommonOptions& common) {
    const Text literal = GetSqlVal(from_utf8(id));
    const auto is_in = [&](const Text& name, const Text& column) {
        return !database.execute(u"select " + column + u" from " + name + u" where " + column + u"=" + literal)->eof();
    };
    if (!is_in(table, u"ID") && !is_in(u"Inventory", ledger_column))
        throw TaskError(Reason::bad_input, common.say(unknown, id));
}

ExitCode set_minimum(const CommonOptions& common, const Minimum& minimum) {
    {
        const auto database = common.read();
        require_minimums(*database, common);
        require_known(*database, u"Goods", u"GId", minimum.goods, words::no_such_goods, common);
        if (!minimum.warehouse.empty())
            require_known(*database, u"Warehouse", u"WID", minimum.warehouse, words::no_such_warehouse, common);
    }
    MasterRow row{find_master_table("minimums"), {}};
    row.values.set(u"GId", from_utf8(minimum.goods));
    row.values.set(u"WID", from_utf8(minimum.warehouse));
    row.values.set(u"Model1", from_utf8(minimum.model1));
    row.values.set(u"Model2", from_utf8(minimum.model2));
    row.values.set(u"Status", minimum.status);
    row.values.set(u"Minimum", minimum.quantity);
    common.bookkeeping({}).save_master({&row, 1});
    std::clog << common.say(words::minimum_is_set, minimum.goods, to_utf8(number_text(minimum.quantity))) << '\n';
    return ExitCode::done;
}

}  // namespace

void add_low(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command =
        add_command(app, common, "low", words::low_about,
                    {{"vantlo low --warehouse W01", words::low_example}, {"vantlo low --all", words::low_all_example}});
    const auto wanted = std::make_shared<MinimumsWanted>();
    add_patterns(*command, "--goods", wanted->goods, common.say(words::only_goods));
    add_patterns(*command, "--warehouse", wanted->warehouses, common.say(words::only_warehouse));
    command->add_flag("--all", wanted->with_enough, common.say(words::low_all));
    const auto options = add_list_options(*command, common);
    command->callback([&call, wanted, options] {
        call.work = [&common = call.common, wanted, options] { return show_low(common, *wanted, *options); };
    });
}

void add_minimum(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command =
        add_command(app, common, "minimum", words::minimum_about,
                    {{"vantlo minimum G001 20", words::minimum_example},
                     {"vantlo minimum G001 5 --warehouse W01", words::minimum_warehouse_example}});
    const auto minimum = std::make_shared<Minimum>();
    command->add_option("GOODS", minimum->goods, common.say(words::minimum_goods))->required()->type_name("");
    command->add_option("QUANTITY", minimum->quantity, common.say(words::minimum_quantity))
        ->required()
        ->check([&common](const std::string& text) {
            return text.starts_with('-') ? common.say(words::minimum_negative) : std::string();
        })
        ->type_name("");
    command->add_option("--warehouse", minimum->warehouse, common.say(words::minimum_warehouse));
    command->add_option("--model1", minimum->model1, common.say(words::minimum_model1));
    command->add_option("--model2", minimum->model2, common.say(words::minimum_model2));
    command->add_option("--status", minimum->status, common.say(words::minimum_status))->type_name("STATUS");
    command->callback(
        [&call, minimum] { call.work = [&common = call.common, minimum] { return set_minimum(common, *minimum); }; });
}

}  // namespace vantlo
