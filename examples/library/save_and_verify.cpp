// A host that keeps its books through the library: it saves a bill, shows the ledger, verifies it, and notices what
// somebody changed behind its back.
//
// Usage: library_example FILE      an SQLite file, which is made anew

#include <cstdio>
#include <filesystem>
#include <stdexcept>

#include "ado/native/open_connection.h"
#include "audit/verification.h"
#include "bills/ledger_row.h"
#include "bills/schema.h"
#include "bookkeeping/bookkeeping.h"

namespace {

using namespace vantlo;

/// A stock-in bill: ten pieces of G001 come into warehouse W01.
Bill stock_in_bill() {
    const BillKind* const kind = find_bill_kind("stock-in");
    Record line = empty_record(kind->lines->columns);
    line.replace(u"Receiver", u"W01");
    line.replace(u"Gid", u"G001");
    line.replace(u"Actualqty", 10.0F);
    return {kind, u"R1001", empty_record(kind->header->columns), {line}};
}

void show(NativeConnection& database) {
    for (const LedgerRow& row : read_ledger(database, {})) {
        std::printf("%s %s: received %s, issued %s, on hand %s\n", to_utf8(row.warehouse).c_str(),
                    to_utf8(row.goods).c_str(), quantity_text(row.received).c_str(), quantity_text(row.issued).c_str(),
                    quantity_text(row.on_hand).c_str());
    }
    const Verification verification = verify(database, Language::english);
    std::printf("ledger and bills %s in %zu rows\n", verification.findings.empty() ? "agree" : "disagree",
                verification.stored.size());
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) return std::puts("Usage: library_example FILE"), 2;
    try {
        std::filesystem::remove(arguments[1]);
        const std::string name = std::string("sqlite:") + arguments[1];
        const Owned<NativeConnection> database = open_connection(name);
        database->run_script(schema_for(database->dialect().name));
        Bookkeeping([&] { return open_connection(name); }).save(stock_in_bill());
        show(*database);
        database->run(u"update Inventory set CurrentQty=7");
        show(*database);
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "library_example: %s\n", failure.what());
        return 1;
    }
}
