#include <doctest/doctest.h>

#include <fstream>
#include <iterator>

#include "tests/support/shell.h"
#include "tool/page/html_text.h"

// vantlo page: what it writes and over what. What a browser makes of it: page_in_browser_test.py.

namespace vantlo::test {
namespace {

TEST_CASE("html_text escapes what HTML would take for its own, and spells out what nobody would see") {
    CHECK(html_text("<b> & \"c\"") == "&lt;b&gt; &amp; &quot;c&quot;");
    CHECK(html_text("a\u202Eb\x01") == "a\\u202Eb\\u0001");
}

TEST_CASE("json_for_html leaves nothing that ends a script element or a line") {
    CHECK(json_for_html("[\"</script><!--\u2028\u2029é\"]") == "[\"\\u003c/script>\\u003c!--\\u2028\\u2029é\"]");
}

TEST_CASE("content_hash is the SHA-256 of a text as policies write it") {
    // The digest of RFC 6234's shortest example, "abc".
    CHECK(content_hash("abc") == "'sha256-ungWv48Bz+pBQUDeXa4iI7ADYaOWF3qctBD/YfIAFa0='");
}

TEST_CASE("filled replaces each name once, and leaves braces in what replaces it") {
    const auto value_of = [](std::string_view name) { return name == "a" ? std::string("{{b}}") : std::string("2"); };
    CHECK(filled("<{{a}} {{b}}>", value_of) == "<{{b}} 2>");
}

struct Shop {
    Shop() {
        shell.vantlo("init");
        shell.file("bill.json", R"({"bills": [{"kind": "stock-in", "id": "B1", "date": "2024-03-05", "lines": [
            {"goods": "G1", "quantity": 2.5, "receiver": "W1"}]}]})");
        REQUIRE(shell.vantlo("save bill.json").exit_code == 0);
    }

    std::string file(const std::string& name) const {
        std::ifstream stream(shell.path(name));
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }

    Shell shell;
};

TEST_CASE_FIXTURE(Shop, "A page is written whole or not at all, and over nothing but a page") {
    const std::string database = file("vantlo.db");
    CHECK(shell.vantlo("page vantlo.db").exit_code == 2);
    CHECK(shell.vantlo("page").exit_code == 2);
    shell.run("ln -s vantlo.db linked.html");
    CHECK(shell.vantlo("page linked.html").exit_code == 5);
    for (const std::string other : {"my notes", "<!doctype html>\n<p>another page"}) {
        shell.file("notes.html", other);
        CHECK(shell.vantlo("page notes.html").has("notes.html is there and is no such page"));
        CHECK(file("notes.html") == other);
    }
    CHECK(file("vantlo.db") == database);
    shell.file("empty.html", "");
    CHECK(shell.vantlo("page empty.html").exit_code == 0);
    CHECK(file("empty.html").ends_with("</html>\n"));

    CHECK(shell.vantlo("page stock.html").exit_code == 0);
    const std::string page = file("stock.html");
    CHECK(shell.vantlo("--lang zh page stock.html").exit_code == 0);
    CHECK(file("stock.html") != page);
    CHECK(shell.vantlo("page no/such/folder.html").exit_code == 9);
    CHECK(!shell.run("ls").has(".new"));
}

TEST_CASE_FIXTURE(Shop, "A page that the disk has no room for leaves the one that is there") {
    REQUIRE(shell.vantlo("page stock.html").exit_code == 0);
    const std::string page = file("stock.html");
    const Finished full = shell.run("trap '' XFSZ; ulimit -f 100; " + shell.program() + " page stock.html");
    CHECK(full.exit_code == 9);
    CHECK_MESSAGE(full.has("stock.html cannot be written"), full.output);
    CHECK(file("stock.html") == page);
    CHECK(!shell.run("ls").has(".new"));
}

TEST_CASE_FIXTURE(Shop, "A page holds the ledger, its cards and what it left out, and no password") {
    CHECK(shell.vantlo("page stock.html").exit_code == 0);
    CHECK(file("stock.html").find("\"begins\":") != std::string::npos);
    CHECK(file("stock.html").find("Cards have the newest 1") == std::string::npos);
    REQUIRE(shell.vantlo("delete --force stock-in B1").exit_code == 0);
    CHECK(shell.vantlo("page stock.html --movements 1").exit_code == 0);
    const std::string page = file("stock.html");
    CHECK(page.find("Cards have the newest 1 movement alone, from ") != std::string::npos);
    CHECK(page.find("\"cards\":[[2.5,[[") != std::string::npos);  // the opening is what the earlier one left
    CHECK(page.find("default-src 'none'") != std::string::npos);
    CHECK(shell.vantlo("page stock.html --movements=-1").exit_code == 2);
}

}  // namespace
}  // namespace vantlo::test
