#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ado/connection.h"

namespace vantlo {

/// The script that makes the tables in a dialect of SQL, as in schema/DIALECT.sql; it is part of the program.
/// Errors   std::runtime_error for a dialect without one.
std::string schema_for(std::string_view dialect);

/// The script that adds the ledger's unique key, as in schema/DIALECT-unique.sql. Errors: as above.
std::string unique_key_for(std::string_view dialect);

/// The scripts of the journal of movements, as in schema/DIALECT-journal.sql and beside it; empty for Access.
struct JournalScripts {
    std::string_view on;
    std::string_view off;
    std::string_view remove;
};

/// Errors: as above.
JournalScripts journal_scripts_for(std::string_view dialect);

/// A table that a host needs only for vantlo, and the statement that makes it.
struct OwnTable {
    struct Column {
        std::string name;
        std::string definition;  ///< as the statement has it, the name included
    };

    std::string name;
    std::string statement;
    std::vector<Column> columns;
};

/// The tables in which vantlo keeps what it did and was told: SavedBill, BillHistory, RepairJournal, PostingJournal,
/// ShopDescription, StockMinimum. Errors: as above.
std::vector<OwnTable> own_tables_for(std::string_view dialect);

/// Errors   Failure, for any other reason than that the table is not there.
bool has_table(Connection& database, const std::string& name);

}  // namespace vantlo
