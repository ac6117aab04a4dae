#include "bookkeeping/transaction_retry.h"

#include <doctest/doctest.h>

#include "ado/native/open_connection.h"
#include "component/inventory_class.h"
#include "dataaccess/shell_hooks.h"
#include "support/failures.h"
#include "tests/support/recording.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/test_database.h"

namespace vantlo::test {
namespace {

using namespace vantlo;

/// What goes wrong at one of the calls, counted over all connections.
struct Fault {
    enum class Kind {
        conflict,     ///< the engine rolls the transaction back for another one's sake
        lost,         ///< the connection is lost before the call is carried out
        answer_lost,  ///< the call is carried out, and then the connection is lost
        refused,      ///< the engine refuses the statement, now and for ever
    };
    Kind kind;
    int at;
    int calls = 0;
};

/// A connection whose calls go wrong by plan. A lost one rolls back, as its server does, and fails from then on.
class FaultyConnection final : public NativeConnection {
public:
    FaultyConnection(Owned<NativeConnection> inner, Fault& fault) : inner_(std::move(inner)), fault_(fault) {}

    ResultTable run(TextView statement) override {
        ResultTable result;
        call([&] { result = inner_->run(statement); });
        return result;
    }
    void begin() override {
        remedy_ = Remedy::none;
        call([&] { inner_->begin(); });
    }
    void commit() override {
        call([&] { inner_->commit(); });
    }
    void roll_back() override { inner_->roll_back(); }
    [[nodiscard]] Remedy remedy() const override { return remedy_; }
    [[nodiscard]] const Dialect& dialect() const override { return inner_->dialect(); }
    [[nodiscard]] std::string engine() const override { return inner_->engine(); }

private:
    template <typename Callable>
    void call(Callable callable) {
        const bool is_planned = ++fault_.calls == fault_.at;
        if (is_planned && fault_.kind == Fault::Kind::conflict) fail(error::locked_by_another, Remedy::save_again);
        if (is_planned && fault_.kind == Fault::Kind::refused) fail(error::syntax_error, Remedy::none);
        if (is_planned && fault_.kind == Fault::Kind::answer_lost) callable();
        if (is_planned) is_lost_ = true;
        if (is_lost_) fail(error::unspecified, Remedy::connect_again);
        callable();
    }
    [[noreturn]] void fail(ErrorNumber number, Remedy remedy) {
        inner_->roll_back();
        remedy_ = remedy;
        throw Failure(number);
    }

    Owned<NativeConnection> inner_;
    Fault& fault_;
    bool is_lost_ = false;
    Remedy remedy_ = Remedy::none;
};

/// An SQLite file with an empty ledger.
struct Shop {
    Shop() { open()->run_script(schema_of("sqlite")); }

    [[nodiscard]] Owned<NativeConnection> open() const { return open_connection("sqlite:" + folder.file("shop.db")); }

    [[nodiscard]] TransactionRetry saver(Fault& fault) const {
        constexpr RetryPolicy at_once{.attempts = 5, .first_pause = {}, .longest_pause = {}};
        return TransactionRetry([this, &fault] { return Owned<NativeConnection>(new FaultyConnection(open(), fault)); },
                                at_once);
    }

    [[nodiscard]] std::string ledger() const { return joined(read_ledger(*open())); }

    TemporaryFolder folder;
};

/// A stock bill of one line: 2 of G1 move from W2 to W1.
std::int32_t post(NativeConnection& connection) {
    Recorder reads;
    RecordedLine line(reads, {{"Gid", u"G1"},
                              {"Unit", u"pcs"},
                              {"Actualqty", 2.0F},
                              {"Receiver", u"W1"},
                              {"Supplier", u"W2"},
                              {"Model1", u""},
                              {"Model2", u""},
                              {"Class", u"C1"},
                              {"Remarks", u""}});
    Inventory_Class object;
    object.set_ADOConn(&connection);
    const std::int32_t result = object.call(u"AddInventory_Db", {line});
    object.set_ADOConn(nullptr);
    return result;
}

const std::string once =
    joined({"W1 G1 '' '' 0 | in 2 out 0 current 2 | C1 pcs ''", "W2 G1 '' '' 0 | in 0 out 2 current -2 | C1 pcs ''"});

// begin, marker, unit look-up, two look-ups, two inserts, commit
constexpr int calls_of_a_save = 8;

TEST_CASE("TransactionRetry posts a bill once, whichever of its calls conflicts, is lost, or loses its answer") {
    using Kind = Fault::Kind;
    for (const Kind kind : {Kind::conflict, Kind::lost, Kind::answer_lost}) {
        for (int at = 1; at <= calls_of_a_save; ++at) {
            INFO("kind " << static_cast<int>(kind) << ", call " << at);
            const Shop shop;
            Fault fault{kind, at};
            TransactionRetry saver = shop.saver(fault);
            CHECK(saver.save(u"bill 1", post) == 0);
            CHECK(shop.ledger() == once);
            CHECK(saver.retries() == 1);
            CHECK(saver.save(u"bill 1", post) == 0);  // it is saved already
            CHECK(shop.ledger() == once);
            CHECK(saver.save(u"bill 2", post) == 0);
            CHECK(shop.ledger() != once);
        }
        const Shop shop;
        Fault fault{kind, calls_of_a_save + 1};
        CHECK(shop.saver(fault).save(u"bill 1", post) == 0);
        CHECK(fault.calls == calls_of_a_save);
    }
}

TEST_CASE("TransactionRetry leaves nothing of a bill that the engine refuses, and does not save it again") {
    for (int at = 1; at <= calls_of_a_save; ++at) {
        INFO("call " << at);
        const Shop shop;
        Fault fault{Fault::Kind::refused, at};
        TransactionRetry saver = shop.saver(fault);
        const bool is_posting = at > 2 && at < calls_of_a_save;  // the component returns the number; others are raised
        if (is_posting) {
            CHECK(saver.save(u"bill 1", post) == error::syntax_error);
        } else {
            CHECK(caught([&] { saver.save(u"bill 1", post); }).number == error::syntax_error);
        }
        CHECK(saver.retries() == 0);
        CHECK(shop.ledger().empty());
        CHECK(saver.save(u"bill 1", post) == 0);
        CHECK(shop.ledger() == once);
    }
}

TEST_CASE("TransactionRetry gives a bill's own result back, rolled back and without another attempt") {
    const Shop shop;
    Fault none{Fault::Kind::lost, 0};
    TransactionRetry saver = shop.saver(none);
    const auto post_then_fail = [](NativeConnection& connection) {
        CHECK(post(connection) == 0);
        return std::int32_t{1};
    };
    CHECK(saver.save(u"bill 1", post_then_fail) == 1);
    CHECK(saver.retries() == 0);
    CHECK(shop.ledger().empty());
}

TEST_CASE("TransactionRetry says at once that nobody answers, and later gives up after a while with the last failure") {
    const Shop shop;
    Fault lost{Fault::Kind::lost, 1};
    int asked = 0;
    const Connect connect_once = [&]() -> Owned<NativeConnection> {
        if (++asked > 1) throw Failure(error::unspecified, "nobody answers");
        return Owned<NativeConnection>(new FaultyConnection(shop.open(), lost));
    };
    RetryPolicy policy{.first_pause = {}, .longest_pause = {}};
    policy.reconnecting = {};
    TransactionRetry saver(connect_once, policy);
    CHECK(caught([&] { saver.save(u"bill 1", post); }).account == "nobody answers");
    CHECK(asked == 2);
    CHECK(shop.ledger().empty());
    CHECK(caught([&] { TransactionRetry(connect_once, {}); }).account == "nobody answers");
    CHECK(asked == 3);
}

TEST_CASE("Two savings under one marker post one bill") {
    const Shop shop;
    Fault none{Fault::Kind::lost, 0};
    TransactionRetry first = shop.saver(none);
    TransactionRetry second = shop.saver(none);
    CHECK(first.save(u"O'Neil's bill", post) == 0);
    CHECK(second.save(u"O'Neil's bill", post) == 0);
    CHECK(shop.ledger() == once);
}

/// Connections of which the first is lost at its first statement, and some after it cannot be opened.
struct RestartingServer {
    [[nodiscard]] Owned<NativeConnection> open(const Shop& shop) {
        if (++openings > 1 && openings <= 1 + refusals) throw Failure(refusal);
        return Owned<NativeConnection>(new FaultyConnection(shop.open(), fault));
    }

    int refusals;
    ErrorNumber refusal = error::unspecified;
    Fault fault{Fault::Kind::lost, 2};
    int openings = 0;
};

TEST_CASE("A lost connection is opened again for a while, which is told once and counts as no attempt") {
    const Shop shop;
    RestartingServer server{.refusals = 40};
    RetryPolicy policy{.attempts = 2, .first_pause = {}, .longest_pause = {}};
    policy.reconnecting_pause = {};
    std::vector<long> told;
    TransactionRetry retry([&] { return server.open(shop); }, policy,
                           [&](std::chrono::milliseconds longest) { told.push_back(longest.count()); });
    CHECK(retry.save(u"bill 1", post) == 0);
    CHECK(server.openings == 42);
    CHECK(told == std::vector<long>{60000});
    CHECK(shop.ledger() == once);
}

TEST_CASE("A lost connection that is then refused a login is not tried again") {
    const Shop shop;
    RestartingServer server{.refusals = 1000, .refusal = error::login_failed};
    CHECK(caught([&] { TransactionRetry([&] { return server.open(shop); }).save(u"bill 1", post); }).number ==
          error::login_failed);
    CHECK(server.openings == 2);
    CHECK(shop.ledger().empty());
}

TEST_CASE("connect_in_turn opens the databases one after the other, past those that cannot be opened") {
    const TemporaryFolder folder;
    const std::string missing = "sqlite:" + folder.file("missing") + "/a.db";
    const Connect connect = connect_in_turn({missing, "sqlite:" + folder.file("b"), "sqlite:" + folder.file("c")});
    connect()->run(u"create table InB (a int)");
    connect()->run(u"create table InC (a int)");
    CHECK(connect()->run(u"select * from InB").yields_rows);
    CHECK(caught([&] { connect_in_turn({missing, missing})(); }).number == error::unspecified);
}

}  // namespace
}  // namespace vantlo::test
