#include "audit/member_sample.h"

#include <doctest/doctest.h>
#include <fmt/format.h>

#include <set>
#include <stdexcept>

#include "bills/field_use.h"
#include "posting/posting_frame.h"
#include "tests/support/printing.h"

namespace vantlo::test {
namespace {

using namespace vantlo;

MemberSample sample_of(TextView name) { return sample_member(*find_method(name)); }

std::string text_of(const Origin& origin) {
    constexpr const char* places[] = {"", "argument ", "line ", "header "};
    return places[static_cast<int>(origin.place)] + to_utf8(origin.name);
}

/// Example  `received+ on_hand+ by line Actualqty x factor`
std::string text_of(const RowRule& rule) {
    constexpr const char* names[] = {"received", "issued", "on_hand"};
    std::string text;
    for (std::size_t counter = 0; counter < rule.counters.size(); ++counter) {
        const auto [from, sign] = rule.counters.at(counter);
        if (sign == 0) continue;
        text += names[counter];
        if (static_cast<std::size_t>(from) != counter) text += std::string("=") + names[static_cast<std::size_t>(from)];
        text += sign > 0 ? "+ " : "- ";
    }
    return text + "by " + text_of(rule.quantity) + (rule.in_base_units ? " x factor" : "");
}

/// A movement in one line: warehouse, status, what happens to a new row, and to an existing one where that differs.
std::string text_of(const SampleMovement& movement) {
    const std::string row = text_of(movement.new_row);
    const std::string existing = text_of(movement.existing_row);
    return text_of(movement.warehouse) + ", status " + text_of(movement.status.origin) + ": " + row +
           (existing == row ? "" : "; existing " + existing);
}

TEST_CASE("A member's movements are found by calling it, in every family") {
    struct Row {
        const char16_t* member;
        std::vector<std::string> movements;
    };
    const Row rows[] = {
        {u"AddInventory_Db",
         {"line Receiver, status 0: received+ on_hand+ by line Actualqty x factor",
          "line Supplier, status 0: issued+ on_hand- by line Actualqty x factor"}},
        {u"ReduceInventory_Db",
         {"line Receiver, status 0: received- on_hand- by line Actualqty x factor",
          "line Supplier, status 0: issued- on_hand+ by line Actualqty x factor"}},
        {u"In_AddInventory", {"line Receiver, status argument iCPZT: received+ on_hand+ by line Actualqty x factor"}},
        {u"Out_AddInventory", {"line Supplier, status argument iCPZT: issued- on_hand+ by line Actualqty x factor"}},
        {u"Loss_ReduceInventory",
         {"line WarehouseId, status argument iGoodsStatus: issued+ on_hand- by line Actualqty x factor"}},
        {u"Over_ReduceInventory",
         {"line Receiver, status header ReferFlag: received- on_hand- by line Actualqty x factor"}},
        {u"SaleIn_AddInventory",
         {"line Receiver, status line Goodstutas: received+ on_hand+ by line Actualqty x factor"}},
        {u"RG_AddInventory_Db",
         {"argument Receiver, status 2: received+ on_hand+ by line Qty x factor",
          "argument Supplier, status 2: issued+ on_hand- by line Qty x factor"}},
        {u"RG_ReduceInventory_Db",
         {"header Receiver, status 2: received- on_hand- by line Qty x factor",
          "header Supplier, status 2: issued- on_hand- by line Qty x factor; existing issued- on_hand+ by line Qty x "
          "factor"}},
        {u"RG_Out_AddInventory", {"line WID, status 1: issued- on_hand+ by line Qty x factor"}},
        {u"RG_In_AddInventoryStatus",
         {"line StatusWID, status line GoodsStatus: received+ on_hand+ by line Qty x factor"}},
        {u"Hj_ReduceInventory_Db",
         {"header Receiver, status 1: received- on_hand- by line Qty x factor",
          "header Supplier, status 1: issued- on_hand+ by line Qty x factor"}},
        {u"XFP_In_AddInventory",
         {"line WID, status line GoodsStatus: received+ on_hand+ by line Qty; existing received+ on_hand+ by line Qty "
          "x "
          "factor"}},
        {u"GoodsConvert_AddItems_ChangeInventory",
         {"line Supplier, status argument enumConvertType: issued+ on_hand- by line Qty",
          "line Receiver, status argument enumConvertType: received+ on_hand+ by line Qty"}},
        {u"BorrowOut_ReduceInventory",
         {"line Supplier, status line Goodstutas: issued+ on_hand- by line UQty x factor"}},
        {u"AddInventory_ZZD_ZJ",
         {"line WareHouseID, status line Goodstutas: issued- on_hand+ by line Actualqty x factor; existing issued- "
          "on_hand+ by line Actualqty"}},
        {u"AddInventory_ZZD_MJ",
         {"header WareHouseID, status header Goodstutas: received+ on_hand+ by header Actualqty"}},
        {u"AddInventory_CXD_MJ",
         {"header WareHouseID, status header Goodstutas: issued- on_hand+ by header Actualqty; existing "
          "received=issued- on_hand+ by header Actualqty"}},
    };
    for (const Row& row : rows) {
        CAPTURE(to_utf8(row.member));
        std::vector<std::string> found;
        for (const SampleMovement& movement : sample_of(row.member).movements) found.push_back(text_of(movement));
        CHECK(found == row.movements);
    }
}

TEST_CASE("A conversion's statuses are found for each of its kinds") {
    using Texts = std::vector<Text>;
    for (const TextView member : {u"GoodsConvert_AddItems_ChangeInventory", u"GoodsConvert_DelItems_ChangeInventory"}) {
        const MemberSample sample = sample_of(member);
        REQUIRE(sample.movements.size() == 2);
        CHECK(sample.movements[0].status.translated == Texts{u"0", u"0", u"0", u"2", u"2", u"1", u"1", u"0"});
        CHECK(sample.movements[1].status.translated == Texts{u"0", u"1", u"2", u"0", u"1", u"2", u"0", u"0"});
        CHECK(sample.movements[0].overwrites_remarks);
        CHECK(sample.null_quantity == MemberSample::NullQuantity::empties_counters);
    }
    CHECK(sample_of(u"In_AddInventory").movements[0].status.translated.empty());
    CHECK(!sample_of(u"In_AddInventory").movements[0].overwrites_remarks);
}

TEST_CASE("A parameter that filters the lines is found with the column of the goods") {
    const std::vector<LineFilter> filters = sample_of(u"In_ReduceInventory").filters;
    REQUIRE(filters.size() == 2);
    CHECK(filters[0].parameter == u"sZLID");
    CHECK(filters[0].goods_column == u"Class");
    CHECK(filters[1].parameter == u"iZYCP");
    CHECK(filters[1].goods_column == u"GCZYCPFlag");
    CHECK(sample_of(u"Out_AddInventory").filters.empty());
}

TEST_CASE("What becomes of a quantity's sign, of its fifth decimal and of null is found") {
    using Sign = MemberSample::Sign;
    using NullQuantity = MemberSample::NullQuantity;
    struct Row {
        const char16_t* member;
        Sign sign;
        const char16_t* parameter;
        bool is_rounded_once;
        NullQuantity null_quantity;
    };
    const Row rows[] = {
        {u"AddInventory_Db", Sign::kept, u"", true, NullQuantity::fails},
        {u"ReduceInventory_Db", Sign::kept, u"", false, NullQuantity::fails},
        {u"Out_ReduceInventory", Sign::dropped_on_request, u"bUseAbs", false, NullQuantity::fails},
        {u"Out_AddInventory", Sign::dropped_on_request, u"bUseAbs", false, NullQuantity::fails},
        {u"SaleIn_ReduceInventory", Sign::dropped, u"", false, NullQuantity::fails},
        {u"ReduceInventory_ZZD_ZJ", Sign::kept, u"", false, NullQuantity::fails},
        {u"ReduceInventory_ZZD_MJ", Sign::kept, u"", false, NullQuantity::empties_counters},
    };
    for (const Row& row : rows) {
        CAPTURE(to_utf8(row.member));
        const MemberSample sample = sample_of(row.member);
        CHECK(sample.sign_of_quantity == row.sign);
        CHECK(sample.magnitude_parameter == row.parameter);
        CHECK(sample.is_rounded_once == row.is_rounded_once);
        CHECK(sample.null_quantity == row.null_quantity);
    }
}

TEST_CASE("The warehouses of a sample are the fields that bill files must give") {
    for (const BillKind& kind : bill_kinds()) {
        CAPTURE(kind.name);
        std::set<Text> of_members;
        for (const std::span<const MemberCall> calls : {kind.post, kind.reversal}) {
            for (const MemberCall& call : calls) {
                for (const SampleMovement& movement : sample_of(call.member).movements) {
                    const Text& name = movement.warehouse.name;
                    of_members.insert(name == u"WarehouseId" ? Text(kind.warehouse_column) : name);
                }
            }
        }
        std::set<Text> of_files;
        for (const BillPart part : {BillPart::header, BillPart::line}) {
            for (const BillColumn& column : columns_of(kind, part)) {
                if (field_use_of(kind).is_warehouse(part, column.field)) of_files.insert(column.column);
            }
        }
        CHECK(of_files == of_members);
    }
}

TEST_CASE("The result for a bill that is not there is found") {
    CHECK(sample_of(u"AddInventory_CXD_MJ").result_without_bill == 1);
    CHECK(sample_of(u"AddInventory_CXD_ZJ").result_without_bill == 0);
    CHECK(sample_of(u"ReduceInventory_Db").result_without_bill == 0);
}

TEST_CASE("A member whose ledger row does not come from the sample is refused") {
    Member member = *find_method(u"ReduceInventory_Db");
    member.posting = [](PostingFrame& frame, std::span<const Argument>) {
        frame.execute(
            Statement().piece(u"insert into Inventory(WID,Status,InQty,OutQty,CurrentQty,Remarks) "
                              u"values('W1',0,1,0,1,'')"));
        return std::int32_t{0};
    };
    CHECK_THROWS_AS(sample_member(member), std::logic_error);
    member.posting = [](PostingFrame&, std::span<const Argument>) { return std::int32_t{5}; };
    CHECK_THROWS_AS(sample_member(member), std::logic_error);
}

}  // namespace
}  // namespace vantlo::test
