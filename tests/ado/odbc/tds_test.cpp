#include <doctest/doctest.h>

#include <algorithm>
#include <atomic>

#include "ado/native/open_connection.h"
#include "ado/odbc/connection_string.h"
#include "automation/calendar.h"
#include "bookkeeping/transaction_retry.h"
#include "support/failures.h"
#include "tests/support/printing.h"
#include "tests/support/servers.h"
#include "tests/support/tds_server.h"

// SQL Server as FreeTDS shows it: the driver is the real one, the server a script.

namespace vantlo::test {
namespace {

/// The code of the character in `unicode(N'仓')` as a server receives it; without the prefix it passes a code page.
TdsAnswer code_of_character(const Text& statement, bool keeps_literals) {
    const std::size_t quote = statement.find(u'\'');
    const bool has_prefix = statement.at(quote - 1) == u'N';
    const unsigned code = has_prefix || keeps_literals ? statement.at(quote + 1) : u'?';
    return TdsField{TdsField::Type::integer, from_utf8(std::to_string(code))};
}

/// What a server answers to the statements of a connection that opens; nothing to others.
std::optional<TdsAnswer> opening_answer(const Text& statement, bool keeps_literals = true) {
    if (statement.starts_with(u"select '\\\\'")) return TdsField{TdsField::Type::text, u"\\\\"};
    if (statement.find(u"unicode(") != Text::npos) return code_of_character(statement, keeps_literals);
    if (statement.starts_with(u"set ") || statement.starts_with(u"use ")) return Done{};
    return std::nullopt;
}

/// A script that answers every further statement alike.
TdsServer::Script always(TdsAnswer answer) {
    return {.statement = [answer](const Text& statement) { return opening_answer(statement).value_or(answer); }};
}

std::ptrdiff_t commits_of(const TdsServer& server) {
    const std::vector<Text> received = server.received();
    return std::ranges::count(received, u"commit");
}

TEST_CASE("FreeTDS logs in with the environment's password, whatever is in it") {
    for (const char* password : {"geheim", "ge;he=im", "{x", " "}) {
        INFO(password);
        const TdsServer server(always(Done{}));
        open_connection(with_password(server.connection_string(), password));
        CHECK(to_utf8(server.password()) == password);
    }
}

TEST_CASE("A login that SQL Server refuses is one, and a brace that FreeTDS cannot take is named") {
    TdsServer::Script script = always(Done{});
    script.login = TdsError{18456, u"Login failed for user 'shop'.", 14};
    const TdsServer server(script);
    const Caught plain = caught([&] { open_connection(with_password(server.connection_string(), "geheim")); });
    CHECK(plain.number == error::login_failed);
    CHECK(plain.account.find("brace") == std::string::npos);
    const Caught brace = caught([&] { open_connection(with_password(server.connection_string(), "ge}heim")); });
    CHECK(brace.number == error::login_failed);
    CHECK(brace.account.find("closing brace") != std::string::npos);
    CHECK(brace.account.find("ge}heim") == std::string::npos);
}

TEST_CASE("A connection that would lose Chinese characters is refused") {
    const TdsServer whole(always(Done{}));
    std::string latin = whole.connection_string();
    latin.replace(latin.find("UTF-8"), 5, "ISO-8859-1");
    CHECK(caught([&] { open_connection(latin); }).account.find("needs ClientCharset=UTF-8") != std::string::npos);

    const TdsServer code_page(
        {.statement = [](const Text& statement) { return opening_answer(statement, false).value_or(Done{}); }});
    CHECK(caught([&] { open_connection(code_page.connection_string()); }).account.find("without the N prefix") !=
          std::string::npos);
}

TEST_CASE("SQL Server's errors carry ADO's numbers and what helps") {
    struct Row {
        std::int32_t number;
        ErrorNumber meaning;
        Remedy remedy = Remedy::none;
    };
    const Row rows[] = {
        {208, error::no_such_table},
        {207, error::no_such_column},
        {102, error::syntax_error},
        {229, error::permission_denied},
        {230, error::permission_denied},
        {262, error::permission_denied},
        {3906, error::permission_denied},
        {245, error::cannot_convert_value},
        {241, error::cannot_convert_value},
        {8114, error::cannot_convert_value},
        {220, error::value_does_not_fit},
        {2628, error::value_does_not_fit},
        {8115, error::value_does_not_fit},
        {8152, error::value_does_not_fit},
        {515, error::constraint_violated},
        {547, error::constraint_violated},
        {2601, error::constraint_violated, Remedy::save_again},
        {2627, error::constraint_violated, Remedy::save_again},
        {1205, error::locked_by_another, Remedy::save_again},
        {1222, error::time_out, Remedy::save_again},
        {3960, error::locked_by_another, Remedy::save_again},
        {596, error::unspecified, Remedy::connect_again},
        {6005, error::unspecified, Remedy::connect_again},
        {9002, error::unspecified},
        {50000, error::unspecified},
    };
    for (const Row& row : rows) {
        INFO(row.number);
        const TdsServer server(always(TdsError{row.number, u"as the server words it"}));
        const auto connection = open_connection(server.connection_string());
        const Caught failure = caught([&] { connection->run(u"update T set a=1"); });
        INFO(failure.account);
        CHECK(failure.number == row.meaning);
        CHECK(connection->remedy() == row.remedy);
        CHECK(failure.account.find("as the server words it") != std::string::npos);
        CHECK(failure.account.find(" " + std::to_string(row.number) + " (") != std::string::npos);
    }
}

TEST_CASE("A time of SQL Server is read as a time") {
    const TdsServer server(always(TdsField{TdsField::Type::time, u"508290000000"}));
    const auto connection = open_connection(server.connection_string());
    CHECK(only_value(*connection, u"select a from T") == Variant(date_of({1899, 12, 30, 14, 7, 9})));
}

TEST_CASE("A deadlock of SQL Server, which rolls back by itself, is tried again on a new connection") {
    std::atomic<int> connections = 0;
    std::atomic<int> attempts = 0;
    TdsServer::Script script = always(Done{});
    script.statement = [&](const Text& statement) -> TdsAnswer {
        if (statement.starts_with(u"set dateformat")) ++connections;
        if (statement == u"update T set a=1" && ++attempts == 1) return TdsError{tds_deadlock, u"deadlocked", 13};
        return opening_answer(statement).value_or(Done{});
    };
    const TdsServer server(script);
    TransactionRetry retry([&] { return open_connection(server.connection_string()); });
    CHECK(retry.save(u"marker", [](GuardedConnection& database) {
        database.execute(u"update T set a=1");
        return 0;
    }) == 0);
    CHECK(attempts == 2);
    CHECK(connections == 2);
    CHECK(commits_of(server) == 1);
}

TEST_CASE("A connection that SQL Server has dropped is opened again, whenever that shows") {
    for (const TextView dropped_at : {u"insert into SavedBill", u"update T"}) {
        INFO(to_utf8(dropped_at));
        std::atomic<int> connections = 0;
        std::atomic<bool> has_dropped = false;
        TdsServer::Script script = always(Done{});
        script.statement = [&](const Text& statement) -> TdsAnswer {
            if (statement.starts_with(u"set dateformat")) ++connections;
            if (statement.starts_with(dropped_at) && !has_dropped.exchange(true)) return HangUp{};
            return opening_answer(statement).value_or(Done{});
        };
        const TdsServer server(script);
        TransactionRetry retry([&] { return open_connection(server.connection_string()); });
        CHECK(retry.save(u"marker", [](GuardedConnection& database) {
            database.execute(u"update T set a=1");
            return 0;
        }) == 0);
        CHECK(connections == 2);
        CHECK(commits_of(server) == 1);
    }
}

TEST_CASE("A connection whose server hangs up at the rollback is not used again") {
    std::atomic<int> connections = 0;
    std::atomic<int> attempts = 0;
    TdsServer::Script script = always(Done{});
    script.statement = [&](const Text& statement) -> TdsAnswer {
        if (statement.starts_with(u"set dateformat")) ++connections;
        if (statement == u"update T set a=1" && ++attempts == 1) return TdsError{tds_deadlock, u"deadlocked", 13};
        return opening_answer(statement).value_or(Done{});
    };
    script.hangs_up_at_rollback = true;
    const TdsServer server(script);
    TransactionRetry retry([&] { return open_connection(server.connection_string()); });
    CHECK(retry.save(u"marker", [](GuardedConnection& database) {
        database.execute(u"update T set a=1");
        return 0;
    }) == 0);
    CHECK(attempts == 2);
    CHECK(connections == 2);
    CHECK(commits_of(server) == 1);
}

}  // namespace
}  // namespace vantlo::test
