#pragma once

#include <cstdlib>
#include <ctime>

#include "output/list_output.h"
#include "reports/period_report.h"
#include "tests/support/journaled_database.h"

namespace vantlo::test {

/// A clock of the machine that goes by a time zone, as long as it lives.
class TimeZone {
public:
    explicit TimeZone(const char* zone) {
        const char* const former = std::getenv("TZ");
        if (former != nullptr) former_ = former;
        set(zone);
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;
    ~TimeZone() {
        if (former_) {
            set(former_->c_str());
        } else {
            ::unsetenv("TZ");
            ::tzset();
        }
    }

private:
    static void set(const char* zone) {
        ::setenv("TZ", zone, 1);
        ::tzset();
    }

    std::optional<std::string> former_;
};

/// Two months of movements, written as if the journal had been on, and the ledger that they leave.
class KnownJournal {
public:
    KnownJournal() {
        const auto move = [&](int number, TextView when, TextView key, TextView changes, TextView bill) {
            journaled_.connection().run(
                u"insert into StockMovement(MovementNo,MovedAt,Action,WID,GId,Model1,Model2,Status,InChange,OutChange,"
                u"CurrentChange,BillKind,BillId) values(" +
                from_utf8(std::to_string(number)) + u",'" + Text(when) + u"','update'," + Text(key) + u",'','',0," +
                Text(changes) + u"," + Text(bill) + u")");
        };
        move(1, u"2024-01-05 10:00:00", u"'W1','G1'", u"10,0,10", u"'stock-in','B1'");
        move(2, u"2024-01-31 23:59:59", u"'W1','G1'", u"0,3,-3", u"'stock-out','B2'");
        move(3, u"2024-02-01 00:00:00", u"'W1','G2'", u"2.5,0,2.5", u"'stock-in','B3'");
        move(4, u"2024-02-10 08:30:00", u"'W1','G1'", u"0,0,1", u"null,null");
        move(5, u"2024-03-03 12:00:00", u"'W2','G1'", u"4,0,4", u"'stock-in','B4'");
        move(6, u"2024-03-04 12:00:00", u"'W2','G9'", u"0.0001,0,0.0001", u"'stock-in','B5'");
        // With the journal off, so that these rows are no movements of their own; then nothing is missing.
        switch_journal_off(connection());
        const auto row = [&](TextView key, TextView quantities) {
            connection().run(u"insert into Inventory(WID,GId,Model1,Model2,Status,InQty,OutQty,CurrentQty) values(" +
                             Text(key) + u",'','',0," + Text(quantities) + u")");
        };
        row(u"'W1','G1'", u"10,3,8");
        row(u"'W1','G2'", u"2.5,0,2.5");
        row(u"'W2','G1'", u"4,0,4");
        row(u"'W2','G9'", u"0.0001,0,0.0001");
        switch_journal_on(connection());
        connection().run(u"insert into Goods(ID,Name,Class,Unit) values('G1','Screen','A','pc')");
        connection().run(u"insert into Goods(ID,Name,Class,Unit) values('G2','Cable','B','m')");
        connection().run(u"insert into Warehouse(ID,Name) values('W1','Main')");
    }
    ~KnownJournal() {
        connection().run(u"delete from Warehouse");
        journaled_.database().clear();
    }

    [[nodiscard]] NativeConnection& connection() { return journaled_.connection(); }

    /// A report's rows as CSV, without its heading.
    std::string report(ReportBy by, std::string_view from, std::string_view to) {
        return rows_of(report_period(connection(), by, period(from, to)));
    }

    static Period period(std::string_view from, std::string_view to) {
        Period period;
        if (!from.empty()) period.from = days_of(from)->from;
        if (!to.empty()) period.until = days_of(to)->until;
        return period;
    }

    static std::string rows_of(const Listing& list) {
        const std::string csv = list_text(list, {}, {"csv", CsvCells::exact}, Language::english, false);
        std::string rows;
        for (const char character : csv.substr(csv.find('\n') + 1))
            rows += character == '\r' ? "" : std::string(1, character);
        return rows;
    }

private:
    TimeZone utc_{"UTC0"};
    JournaledDatabase journaled_;
};

}  // namespace vantlo::test
