#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ado/native/native_connection.h"
#include "automation/error_text.h"
#include "reports/listing.h"
#include "reports/stock.h"
#include "reports/stock_card.h"

namespace vantlo {

/// What verify said of a ledger.
struct Verdict {
    std::string failure;  ///< why it said nothing, in the database's words; empty otherwise
    std::vector<std::pair<std::string, std::size_t>> causes;  ///< in words, each with the number of its cases
    std::string report;
};

/// What came and went in a unit during a day or a month, between what was on hand before and after.
struct PeriodOfUnit {
    std::string begins;  ///< yyyy-MM-dd or yyyy-MM
    std::string unit;
    Currency opening, received, issued, closing;
};

/// All that a page shows of a database at one moment.
struct StockPage {
    Date made_at;            ///< local time
    std::string utc_offset;  ///< `+08:00`
    std::string engine;
    std::vector<StockRow> ledger;
    std::optional<std::size_t> bills;  ///< unknown where it is not known how bills are read
    std::optional<Listing> minimums;   ///< all, as list_minimums has them; nothing where no table of minimums is there
    Verdict verdict;

    bool has_journal = false;
    std::string journal_failure;  ///< why the journal could not be read; empty otherwise
    std::optional<Date> journal_begins;
    std::optional<Date> cards_begin;  ///< the first movement that cards show; earlier ones are left out
    std::vector<StockCard> cards;
    std::vector<PeriodOfUnit> days;
};

/// Reads all of it from one state of the database.
/// `movements` is how many of the newest the cards show at most.
/// Errors   Failure, if there is no ledger.
StockPage read_stock_page(NativeConnection& database, std::int64_t movements, Language language);

/// How such a page begins.
inline constexpr std::string_view page_beginning = "<!doctype html>\n<!-- vantlo stock page -->\n";

/// The page as one HTML file that needs no other. `database` is its name for people, without a password.
std::string page_html(const StockPage& page, const std::string& database, const std::string& version,
                      Language language);

}  // namespace vantlo
