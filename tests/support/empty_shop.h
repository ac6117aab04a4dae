#pragma once

#include "tests/support/servers.h"
#include "tests/support/test_database.h"

namespace vantlo::test {

/// A server's database with every table empty for the length of a test, with the ledger's unique key or without it.
class EmptyShop {
public:
    EmptyShop(const Server& server, bool with_key) : owner_(server.connect()) {
        owner_->run_script(schema_of(server.dialect));
        owner_->run_script(emptying);
        if (!with_key) return;
        owner_->run_script(schema_of(server.dialect + "-unique"));
        drop_key_ = server.dialect == "mariadb" ? "drop index InventoryUniqueKey on Inventory"
                                                : "drop index InventoryUniqueKey";
    }
    EmptyShop(const EmptyShop&) = delete;
    EmptyShop& operator=(const EmptyShop&) = delete;
    ~EmptyShop() { owner_->run_script(emptying + drop_key_); }

private:
    inline static const std::string emptying =
        "delete from Inventory; delete from Warehouse; delete from Goods; delete from GoodsUnit;"
        "delete from StockBill; delete from StockBillItems; delete from RGstockBill; delete from RGstockBillItems;"
        "delete from GBorrow; delete from GBorrowItems; delete from GoodsBill; delete from GoodsBillItems;"
        "delete from SavedBill; delete from BillHistory; delete from RepairJournal;";

    Owned<OdbcConnection> owner_;
    std::string drop_key_;
};

}  // namespace vantlo::test
