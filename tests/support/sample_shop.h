#pragma once

#include <fstream>

#include "ado/native/open_connection.h"
#include "bills/schema.h"
#include "bookkeeping/bookkeeping.h"
#include "import/shop_file.h"

// The sample shop of examples/shop.

namespace vantlo::test {

/// Saves its master data and its four weeks of bills.
inline void save_sample_shop(Bookkeeping& bookkeeping) {
    const std::string folder = VANTLO_SOURCE_DIR "/examples/shop/";
    for (const char* file : {"master.json", "week1.json", "week2.json", "week3.json", "week4.json"}) {
        const ShopFile shop = read_shop_file(folder + file, Language::english);
        bookkeeping.save_master(shop.master);
        for (const Bill& bill : shop.bills) bookkeeping.save(bill);
    }
}

/// Takes back the bills that it names for that.
inline void reverse_sample_bills(Bookkeeping& bookkeeping) {
    std::ifstream taken_back(VANTLO_SOURCE_DIR "/examples/shop/taken-back.txt");
    for (std::string kind, id; taken_back >> kind >> id;) {
        bookkeeping.reverse(*find_bill_kind(kind), from_utf8(id));
    }
}

inline Owned<NativeConnection> empty_shop_in_memory() {
    const auto database = open_connection("sqlite::memory:");
    database->run_script(schema_for("sqlite"));
    return database;
}

inline Owned<NativeConnection> sample_shop_in_memory() {
    const auto database = empty_shop_in_memory();
    Bookkeeping bookkeeping([&] { return database; });
    save_sample_shop(bookkeeping);
    return database;
}

}  // namespace vantlo::test
