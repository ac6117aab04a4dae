#include <doctest/doctest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "component/inventory_class.h"
#include "tests/support/test_database.h"

// One process posts for a long time: what it holds at the end is what it held when it had warmed up.

namespace vantlo::test {
namespace {

/// How many postings, from VANTLO_SOAK_POSTINGS; without it as many as take seconds.
long postings() {
    const char* const wanted = std::getenv("VANTLO_SOAK_POSTINGS");
    return wanted == nullptr ? 50'000 : std::strtol(wanted, nullptr, 10);
}

/// The pages of this process that are in memory.
long resident_pages() {
    std::ifstream statm("/proc/self/statm");
    long total = 0;
    long resident = 0;
    statm >> total >> resident;
    return resident;
}

long open_files() {
    const auto entries = std::filesystem::directory_iterator("/proc/self/fd");
    return std::distance(begin(entries), end(entries));
}

/// A line for every family: each finds the columns that it reads.
class EveryLine final : public Line {
public:
    void turn_to(int item) { goods_ = u"G" + from_utf8(std::to_string(item)); }

    Variant value(TextView name) override {
        for (const TextView quantity : {u"Actualqty", u"Qty", u"UQty"}) {
            if (name == quantity) return 2.5F;
        }
        for (const TextView status : {u"Goodstutas", u"GoodsStatus"}) {
            if (name == status) return std::int32_t{1};
        }
        if (name == u"Gid") return goods_;
        if (name == u"Remarks" || name == u"SpRemarks") return u"it's soaked";
        return u"W1";
    }

private:
    Text goods_;
};

/// A ledger and bills of three lines for every family, and a host that posts all members in turn.
class Shop {
public:
    Shop() {
        object_.let_DATAType(u"[Microsoft SQL Server]");
        object_.set_ADOConn(&database_->connection());
        database_->fill(rows());
    }
    ~Shop() { object_.set_ADOConn(nullptr); }

    /// Calls the next method. Returns its status.
    std::int32_t post_next() {
        const std::span<const Member> members = member_table();
        while (members[next_ % members.size()].kind != MemberKind::method) ++next_;
        const Member& member = members[next_ % members.size()];
        line_.turn_to(static_cast<int>(next_ / members.size() % goods));
        ++next_;
        std::vector<Argument> arguments;
        for (const Parameter& parameter : member.parameters()) {
            if (parameter.optional) break;
            if (parameter.type == ParameterType::line) arguments.emplace_back(line_);
            if (parameter.type == ParameterType::text) arguments.emplace_back(u"B1");
            if (parameter.type == ParameterType::long_integer) arguments.emplace_back(std::int32_t{1});
        }
        return object_.call(member, arguments);
    }

private:
    static constexpr int goods = 20;
    static constexpr int lines = 3;

    using Columns = std::vector<std::pair<std::string, Variant>>;

    /// The columns that every line has, behind the others.
    static Columns with_goods(Columns columns, const Text& goods_name) {
        columns.insert(columns.end(), {{"Gid", goods_name}, {"Model1", u"W1"}, {"Model2", u"W1"}, {"Unit", u"W1"}});
        return columns;
    }

    static std::vector<TableRow> rows() {
        std::vector<TableRow> rows = {
            {"StockBill", {{"Id", u"B1"}, {"ReferFlag", std::int16_t{1}}}},
            {"RGstockBill", {{"id", u"B1"}, {"Receiver", u"W1"}, {"Supplier", u"W2"}}},
            {"GoodsBill",
             with_goods({{"Id", u"B1"}, {"WareHouseID", u"W1"}, {"Goodstutas", 0}, {"Actualqty", 1.0F}}, u"G1")},
        };
        for (int item = 0; item < goods; ++item) {
            const Text name = u"G" + from_utf8(std::to_string(item));
            rows.push_back({"GoodsUnit", {{"id", name}, {"Unit", u"W1"}, {"UnitConverter", 12.0}}});
            if (item >= lines) continue;
            const Columns key = {{"BillId", u"B1"}, {"ItemNo", item}};
            const Columns own[] = {
                {{"Receiver", u"W1"}, {"Supplier", u"W2"}, {"Actualqty", 2.5F}, {"Qty", 2.5F}, {"Goodstutas", 0}},
                {{"WID", u"W1"}, {"StatusWID", u"W2"}, {"Qty", 2.5F}, {"GoodsStatus", 1}},
                {{"Receiver", u"W1"}, {"Supplier", u"W2"}, {"UQty", 2.5F}, {"Goodstutas", 1}},
                {{"WareHouseID", u"W1"}, {"Actualqty", 2.5F}, {"Goodstutas", 0}},
            };
            const char* const tables[] = {"StockBillItems", "RGstockBillItems", "GBorrowItems", "GoodsBillItems"};
            for (std::size_t i = 0; i < std::size(tables); ++i) {
                Columns columns = key;
                columns.insert(columns.end(), own[i].begin(), own[i].end());
                rows.push_back({tables[i], with_goods(std::move(columns), name)});
            }
        }
        return rows;
    }

    std::unique_ptr<TestDatabase> database_ = make_sqlite_database();
    Inventory_Class object_;
    EveryLine line_;
    std::size_t next_ = 0;
};

#if defined(__SANITIZE_ADDRESS__)
constexpr bool keeps_freed_memory = true;  // the sanitizer, on purpose
#else
constexpr bool keeps_freed_memory = false;
#endif

TEST_CASE("A process that posts for a long time holds no more memory and no more files than when it had warmed up") {
    const long total = postings();
    const long warm_up = total / 10;
    Shop shop;
    int failed = 0;
    long resident = 0;
    long files = 0;
    for (long n = 0; n < total; ++n) {
        if (n == warm_up) {
            files = open_files();
            resident_pages();  // what measuring needs is in memory only after it was done once
            resident = resident_pages();
        }
        if (shop.post_next() != 0) ++failed;
    }
    const long resident_at_end = resident_pages();
    CHECK(failed == 0);
    CHECK(open_files() == files);
    if (!keeps_freed_memory) CHECK(100 * resident_at_end <= 101 * resident);
    MESSAGE(total << " postings, " << resident << " pages resident after " << warm_up << ", " << resident_at_end
                  << " at the end");
}

}  // namespace
}  // namespace vantlo::test
