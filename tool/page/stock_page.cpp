#include "tool/page/stock_page.h"

#include <fmt/format.h>

#include <cstdlib>
#include <ctime>

#include "ado/native/snapshot.h"
#include "audit/verification.h"
#include "bills/schema.h"
#include "bookkeeping/journal.h"
#include "output/list_output.h"
#include "output/verify_report.h"
#include "reports/lists.h"
#include "reports/minimums.h"
#include "reports/period_report.h"

namespace vantlo {

namespace {

/// Text of a cell, in UTF-8.
std::string text_in(const Listing& list, const std::vector<Variant>& row, std::string_view column) {
    return cell_text(row[*list.find(column)]);
}

std::optional<std::size_t> count_bills(NativeConnection& database) {
    try {
        return list_bills(database, {}).rows.size();
    } catch (const Failure&) {
        return std::nullopt;
    }
}

Verdict ask_verify(NativeConnection& database, Language language) {
    Verdict verdict;
    try {
        const Verification verification = verify(database, language);
        for (const Finding& finding : verification.findings) {
            const std::string cause = cause_text(finding.cause, language);
            if (verdict.causes.empty() || verdict.causes.back().first != cause) verdict.causes.emplace_back(cause, 0);
            ++verdict.causes.back().second;
        }
        verdict.report = report_of(verification.findings, verification.timeline, verification.stored.size(), language);
    } catch (const Failure& failure) {
        verdict.failure = account_of(failure, language);
    }
    return verdict;
}

std::vector<PeriodOfUnit> read_days(NativeConnection& database) {
    const Listing report = report_period(database, ReportBy::day, {});
    std::vector<PeriodOfUnit> days;
    for (const auto& row : report.rows) {
        const auto quantity = [&](std::string_view column) { return to_currency(row[*report.find(column)]); };
        days.push_back({text_in(report, row, "day"), text_in(report, row, "unit"), quantity("opening"),
                        quantity("received"), quantity("issued"), quantity("closing")});
    }
    return days;
}

bool keeps_journal(NativeConnection& database) {
    const JournalState state = journal_state(database);
    return state != JournalState::absent && state != JournalState::unsupported;
}

/// How far the clock on the wall is from UTC now. Example: `+08:00`
std::string utc_offset() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    const long minutes = local.tm_gmtoff / 60;
    return fmt::format("{}{:02}:{:02}", minutes < 0 ? '-' : '+', std::abs(minutes) / 60, std::abs(minutes) % 60);
}

/// Fills the page's cards and days, or says why they are not there: an account need not have the right to read them.
void read_journal(NativeConnection& database, std::int64_t movements, Language language, StockPage& page) {
    try {
        page.journal_begins = journal_begins(database);
        const NewestMovements newest = newest_movements(database, movements);
        page.cards_begin = newest.begins;
        CardsWanted wanted;
        wanted.from = newest.from;
        page.cards = read_cards(database, wanted);
        page.days = read_days(database);
    } catch (const Failure& failure) {
        page.journal_failure = account_of(failure, language);
    }
}

}  // namespace

StockPage read_stock_page(NativeConnection& database, std::int64_t movements, Language language) {
    StockPage page;
    page.engine = database.engine();
    page.has_journal = keeps_journal(database);
    const Snapshot snapshot(database);
    page.made_at = local_now();
    page.utc_offset = utc_offset();
    page.ledger = read_stock(database, {});
    if (has_table(database, "StockMinimum")) {
        MinimumsWanted wanted;
        wanted.with_enough = true;
        page.minimums = list_minimums(database, wanted);
    }
    if (page.has_journal) read_journal(database, movements, language, page);
    page.bills = count_bills(database);
    page.verdict = ask_verify(database, language);
    return page;
}

}  // namespace vantlo
