#include <doctest/doctest.h>

#include <chrono>
#include <thread>

#include "ado/native/open_connection.h"
#include "tests/support/empty_shop.h"
#include "tests/support/shell.h"

// What vantlo says where a server lacks a table or a column, and where it keeps vantlo waiting.

namespace vantlo::test {
namespace {

/// Changes the database for the length of a test.
class Altered {
public:
    Altered(const Server& server, const char* alter, const char* undo)
        : connection_(open_connection(server.connection_string)), undo_(undo) {
        connection_->run_script(alter);
    }
    Altered(const Altered&) = delete;
    Altered& operator=(const Altered&) = delete;
    ~Altered() { connection_->run_script(undo_); }

private:
    Owned<NativeConnection> connection_;
    const char* undo_;
};

Finished vantlo_on(const Server& server, const Shell& shell, const std::string& arguments) {
    return shell.run("VANTLO_DB='" + server.connection_string + "' " + Shell::program() + " " + arguments);
}

TEST_CASE("A table or column that a server lacks is named, in both languages, with the command that makes it") {
    const Shell shell;
    for (const Server& server : servers()) {
        CAPTURE(server.dialect);
        const EmptyShop shop(server, false);
        {
            const Altered altered(server, "alter table Goods rename to Elsewhere",
                                  "alter table Elsewhere rename to Goods");
            const std::string table = server.dialect == "postgresql" ? "goods" : "Goods";
            const Finished goods = vantlo_on(server, shell, "goods");
            CHECK(goods.exit_code == 4);
            CHECK_MESSAGE(goods.output.starts_with("vantlo: the database has no table " + table + ". vantlo init "),
                          goods.output);
            const Finished chinese = vantlo_on(server, shell, "--lang zh goods");
            CHECK_MESSAGE(chinese.output.starts_with("vantlo: 数据库中没有表 " + table + "。vantlo init "),
                          chinese.output);
        }
        const Altered altered(server, "alter table Goods rename column Class to Sort",
                              "alter table Goods rename column Sort to Class");
        const Finished goods = vantlo_on(server, shell, "goods");
        CHECK(goods.exit_code == 4);
        CHECK_MESSAGE(goods.has("vantlo: the table Goods has no column "), goods.output);
        CHECK(goods.has("vantlo adopt --dry-run shows what is missing."));
    }
}

TEST_CASE("vantlo says after a second that a server keeps it waiting for a lock") {
    const Shell shell;
    shell.file("bill.json", R"({"bills": [{"kind": "stock-in", "id": "B1",
        "lines": [{"goods": "G1", "quantity": 2, "receiver": "W1"}]}]})");
    for (const Server& server : servers()) {
        CAPTURE(server.dialect);
        const EmptyShop shop(server, true);
        REQUIRE(vantlo_on(server, shell, "save bill.json").exit_code == 0);
        const Owned<NativeConnection> other = open_connection(server.connection_string);
        other->begin();
        other->run(u"update Inventory set Remarks='held'");
        Finished finished;
        std::thread program([&] { finished = vantlo_on(server, shell, "delete stock-in B1"); });
        std::this_thread::sleep_for(std::chrono::milliseconds(2500));  // the notice comes after a second
        other->roll_back();
        program.join();
        CHECK_MESSAGE(finished.exit_code == 0, finished.output);
        CHECK_MESSAGE(finished.has("vantlo: no answer from the database for a second"), finished.output);
    }
}

}  // namespace
}  // namespace vantlo::test
