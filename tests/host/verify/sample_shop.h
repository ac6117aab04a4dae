#pragma once

#include <fstream>

#include "ado/open_connection.h"
#include "host/bookkeeping.h"
#include "host/schema.h"

namespace vantlo::test {

/// A database with the sample shop of examples/shop, saved through the host. `with_bills_taken_back` takes back those that
/// the sample names.
inline Owned<NativeConnection> sample_shop(const Owned<NativeConnection>& database, bool with_bills_taken_back) {
    const std::string folder = VANTLO_SOURCE_DIR "/examples/shop/";
    database->run_script(host::schema_for(database->dialect()));
    host::Bookkeeping bookkeeping([&] { return database; });
    for (const char* file : {"master.json", "week1.json", "week2.json", "week3.json", "week4.json"}) {
        const host::ShopFile shop = host::read_shop_file(folder + file);
        bookkeeping.save_master(shop.master);
        for (const host::Bill& bill : shop.bills) bookkeeping.save(bill);
    }
    std::ifstream taken_back(folder + "taken-back.txt");
    for (std::string kind, id; with_bills_taken_back && taken_back >> kind >> id;) {
        bookkeeping.remove(*host::find_bill_kind(kind), from_utf8(id));
    }
    return database;
}

inline Owned<NativeConnection> sample_shop_in_memory(bool with_bills_taken_back = false) {
    return sample_shop(open_connection("sqlite::memory:"), with_bills_taken_back);
}

}  // namespace vantlo::test
