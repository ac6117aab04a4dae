#include <doctest/doctest.h>

#include <fstream>
#include <sstream>

#include "ado/native/open_connection.h"
#include "bookkeeping/journal.h"
#include "bookkeeping/shop_description.h"
#include "tests/support/shell.h"
#include "tests/support/test_database.h"

// vantlo adopt in a shop whose bill tables are its own: --propose, the draft completed by hand, --shop.

namespace vantlo::test {
namespace {

/// A ledger and bill tables with names of the shop's choosing.
struct OwnShop {
    OwnShop() {
        open()->run_script(
            "create table Inventory(WID nvarchar(9),GId nvarchar(9),Model1 nvarchar(9),Model2 nvarchar(9),Status int,"
            "Class nvarchar(9),Unit nvarchar(9),InQty money,OutQty money,CurrentQty money,Remarks nvarchar(9));"
            "create index InventoryKey on Inventory(WID,GId);"
            "create table GoodsUnit(id nvarchar(9),Unit nvarchar(9),UnitConverter float);"
            "create table 单据(单号 nvarchar(9), 类型 nvarchar(9), 日期 date);"
            "create table 单据明细(单号 nvarchar(9), 行号 int, 商品 nvarchar(9), 数量 int, 单位 nvarchar(9), 仓库 "
            "nvarchar(9));"
            "insert into 单据 values('甲1','入库','2024-03-05'),('甲2','盘点','2024-03-06');"
            "insert into 单据明细 values('甲1',1,'G1',12,'台','W1'),('甲2',1,'G1',99,'台','W1');"
            "insert into Inventory values('W1','G1','','',0,'','台',12,0,12,'')");
    }

    [[nodiscard]] Owned<NativeConnection> open() const { return open_connection("sqlite:" + shell.path("vantlo.db")); }

    /// The draft as a person completes it.
    void complete_draft() const {
        shell.vantlo("adopt --propose >draft.json");
        shell.run(
            "python3 -c \"import json; d = json.load(open('draft.json')); g = d['bills'][0];"
            "g['kinds'] = [{'kind': 'stock-in', 'where': k['where']} for k in g['kinds'] if '入库' in k['where']];"
            "g['header']['columns'].update(ReferFlag=None, Remarks=None);"
            "g['lines']['columns'].update({n: None for n, v in g['lines']['columns'].items() if v == '?'}, "
            "Receiver='仓库');"
            "json.dump(d, open('shop.json', 'w'))\"");
    }

    Shell shell;
};

TEST_CASE_FIXTURE(OwnShop, "A draft that nobody completed is refused with exit code 5, and nothing is made") {
    const Finished draft = shell.vantlo("adopt --propose 2>&1 >draft.json");
    CHECK(draft.exit_code == 0);
    CHECK(draft.output == "");
    const Finished refused = shell.vantlo("adopt --yes --shop draft.json");
    CHECK(refused.exit_code == 5);
    CHECK_MESSAGE(refused.has("/bills/1/kinds/1/kind is still \"?\" and has to be filled in"), refused.output);
    CHECK(journal_state(*open()) == JournalState::absent);
    CHECK(shell.vantlo("adopt --yes --shop nowhere.json").exit_code == 5);
}

TEST_CASE_FIXTURE(OwnShop, "A completed draft is tried, shown and kept, and verify reads the shop's bills by it") {
    complete_draft();
    const Finished asked = shell.vantlo("adopt --shop shop.json </dev/null");
    CHECK(asked.exit_code == 2);
    CHECK_MESSAGE(asked.has("stock-in: 1 bill\n1 line in all\n"), asked.output);
    CHECK(asked.has("the description of the bill tables"));
    CHECK(journal_state(*open()) == JournalState::absent);
    CHECK(shell.vantlo("adopt --dry-run --shop shop.json").has("insert into ShopDescription(Content) values('{"));

    CHECK(shell.vantlo("adopt --yes --shop shop.json").exit_code == 0);
    const Finished verified = shell.vantlo("verify");
    CHECK_MESSAGE(verified.exit_code == 0, verified.output);
    CHECK(!verified.has("No bill takes part"));
    CHECK(open()->run(u"select Content from ShopDescription").rows.size() == 1);
    CHECK(shell.vantlo("adopt --yes --shop shop.json").exit_code == 0);
    CHECK(open()->run(u"select Content from ShopDescription").rows.size() == 1);

    CHECK(shell.vantlo("leave --yes").exit_code == 0);
    CHECK(open()->run(u"select name from sqlite_schema where name = 'ShopDescription'").rows.empty());
    CHECK(open()->run(u"select * from 单据明细").rows.size() == 2);
}

TEST_CASE_FIXTURE(OwnShop,
                  "Without a description no bill takes part, and the ledger is compared with its movements alone") {
    const Finished adopted = shell.vantlo("adopt --yes");
    CHECK(adopted.exit_code == 0);
    CHECK_MESSAGE(adopted.has("no bill takes part in an audit; see vantlo adopt --propose"), adopted.output);
    const Finished agrees = shell.vantlo("verify");
    CHECK_MESSAGE(agrees.exit_code == 0, agrees.output);
    CHECK(agrees.has("No bill takes part"));
    // A change that goes past the triggers.
    open()->run_script("drop trigger StockMovementOfUpdate; update Inventory set InQty = 13, CurrentQty = 13");
    const Finished differs = shell.vantlo("verify");
    CHECK(differs.exit_code == 3);
    CHECK_MESSAGE(differs.has("WID='W1' and GId='G1'"), differs.output);
}

TEST_CASE_FIXTURE(OwnShop, "A description whose columns are not there is refused with the database's words") {
    complete_draft();
    shell.run("sed -i 's/\\\\u6570\\\\u91cf/Pieces/' shop.json");  // 数量, as Python writes it
    const Finished refused = shell.vantlo("adopt --yes --shop shop.json");
    CHECK(refused.exit_code == 4);
    CHECK_MESSAGE(refused.has("Pieces"), refused.output);
    CHECK(journal_state(*open()) == JournalState::absent);
}

TEST_CASE("The description that docs/adopting.md shows can be kept") {
    std::ostringstream page;
    page << std::ifstream(VANTLO_SOURCE_DIR "/docs/adopting.md").rdbuf();
    const std::string text = page.str();
    const std::size_t begin = text.find("```json\n");
    REQUIRE(begin != std::string::npos);
    const std::string example = text.substr(begin + 8, text.find("```\n", begin + 8) - begin - 8);
    CHECK(described_bill_sources(example, dialect_named("sqlite"), Language::english).size() == 1);
}

}  // namespace
}  // namespace vantlo::test
