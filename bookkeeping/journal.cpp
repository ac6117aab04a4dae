#include "bookkeeping/journal.h"

#include <algorithm>

#include "automation/error.h"
#include "automation/text_value.h"
#include "bills/schema.h"
#include "bookkeeping/find_table.h"

namespace vantlo {

namespace {

/// What an engine's catalog tells: the triggers that are there and enabled, and the journal's table.
struct Catalog {
    std::string_view dialect;
    const char16_t* triggers;
    int complete;  ///< how many triggers a journal has
    const char16_t* tables;
};

// clang-format off
constexpr Catalog catalogs[] = {
    {"sqlite",
     u"select count(*) as n from sqlite_schema where type = 'trigger' and name in "
     u"('StockMovementOfInsert', 'StockMovementOfUpdate', 'StockMovementOfKey', 'StockMovementOfDelete')", 4,
     u"select count(*) as n from sqlite_schema where type = 'table' and name = 'StockMovement'"},
    {"postgresql",
     u"select count(*) as n from pg_trigger where tgrelid = to_regclass('Inventory') and tgenabled <> 'D' and tgname in "
     u"('stockmovementofinsert', 'stockmovementofupdate', 'stockmovementofdelete', 'stockmovementoftruncate')", 4,
     u"select count(*) as n from pg_class where oid = to_regclass('StockMovement')"},
    {"mariadb",
     u"select count(*) as n from information_schema.triggers where trigger_schema = database() and trigger_name in "
     u"('StockMovementOfInsert', 'StockMovementOfUpdate', 'StockMovementOfDelete')", 3,
     u"select count(*) as n from information_schema.tables where table_schema = database() "
     u"and table_name = 'StockMovement'"},
    {"sqlserver",
     u"select count(*) as n from sys.triggers where parent_id = object_id('Inventory') and is_disabled = 0 "
     u"and name = 'StockMovementOfChange'", 1,
     u"select count(*) as n from sys.tables where name = 'StockMovement'"},
};
// clang-format on

std::int64_t count_of(NativeConnection& database, TextView select) {
    const RecordsetVariable rows = database.execute(select);
    return static_cast<std::int64_t>(to_double(rows->field(u"n")));
}

/// Whether the journal's table is gone, not merely out of this account's sight.
bool lacks_table(NativeConnection& database, const Catalog& catalog) {
    if (count_of(database, catalog.tables) > 0) return false;
    try {
        database.run(u"select MovementNo from StockMovement where 1=0");
    } catch (const Failure& failure) {
        return failure.number() == error::no_such_table;
    }
    return false;
}

/// Runs scripts as a whole. MariaDB's statements of this kind commit by themselves, and its scripts lock what they need.
void run_as_a_whole(NativeConnection& database, std::initializer_list<std::string_view> scripts) {
    const bool has_transaction = database.dialect().name != "mariadb";
    if (has_transaction) database.begin();
    try {
        for (const std::string_view script : scripts) database.run_script(std::string(script));
        if (has_transaction) database.commit();
    } catch (...) {
        if (has_transaction)
            database.roll_back();
        else
            database.run(u"unlock tables");
        throw;
    }
}

/// One side of a row of LedgerWithoutMovement; the columns of its quantities begin with `side`.
LedgerRow side_of(Recordset& rows, const Text& side) {
    const auto text = [&](TextView column) { return text_or_empty(rows.field(column)); };
    const auto quantity = [&](TextView column) { return to_currency(rows.field(side + Text(column))); };
    LedgerRow row;
    row.warehouse = text(u"WID");
    row.goods = text(u"GId");
    row.model1 = text(u"Model1");
    row.model2 = text(u"Model2");
    row.status = text(u"Status");
    row.received = quantity(u"In");
    row.issued = quantity(u"Out");
    row.on_hand = quantity(u"Current");
    return row;
}

}  // namespace

JournalState journal_state(NativeConnection& database) {
    const auto* const catalog = std::ranges::find(catalogs, database.dialect().name, &Catalog::dialect);
    if (catalog == std::end(catalogs)) return JournalState::unsupported;
    const std::int64_t triggers = count_of(database, catalog->triggers);
    if (triggers > 0 && lacks_table(database, *catalog)) return JournalState::broken;
    if (triggers == catalog->complete) return JournalState::on;
    if (triggers > 0) return JournalState::incomplete;
    if (count_of(database, catalog->tables) > 0) return JournalState::off;
    // Some catalogs hide from an account what it has no right to.
    return find_table(database, "StockMovement") ? JournalState::off : JournalState::absent;
}

bool has_movements(JournalState state) {
    return state == JournalState::off || state == JournalState::incomplete || state == JournalState::on;
}

JournalStatus journal_status(NativeConnection& database) {
    JournalStatus status{journal_state(database), 0, {}};
    if (!has_movements(status.state)) return status;
    status.movements = count_of(database, u"select count(*) as n from StockMovement");
    if (status.state == JournalState::off) return status;
    const RecordsetVariable rows = database.execute(u"select * from LedgerWithoutMovement");
    for (; !rows->eof(); rows->move_next()) {
        status.unexplained.push_back({side_of(*rows, u"Ledger"), side_of(*rows, u"Moved")});
    }
    return status;
}

void switch_journal_on(NativeConnection& database) {
    const JournalState before = journal_state(database);
    if (before == JournalState::on) return;
    const JournalScripts scripts = journal_scripts_for(database.dialect().name);
    if (before == JournalState::broken)
        run_as_a_whole(database, {scripts.off, scripts.on});
    else
        run_as_a_whole(database, {scripts.on});
}

void switch_journal_off(NativeConnection& database) {
    run_as_a_whole(database, {journal_scripts_for(database.dialect().name).off});
}

void remove_journal(NativeConnection& database) {
    const JournalScripts scripts = journal_scripts_for(database.dialect().name);
    run_as_a_whole(database, {scripts.off, scripts.remove});
}

}  // namespace vantlo
