#include <doctest/doctest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

// What every sample host must do, whether its language can be run here or not, and what the page about them says.

namespace {

namespace fs = std::filesystem;

const fs::path root = VANTLO_SOURCE_DIR;

std::string content_of(const fs::path& path) {
    std::ifstream file(root / path);
    REQUIRE_MESSAGE(file.is_open(), path);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> sample_names() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(root / "examples/hosts")) {
        names.push_back(entry.path().filename().string());
    }
    std::ranges::sort(names);
    return names;
}

/// The declared interface of a stock bill's lines: its identifier, and its properties in the order of the getters.
struct LineInterface {
    LineInterface() {
        const std::string idl = content_of("com/idl/corvane.idl");
        const std::size_t begin = idl.find("interface _StockBillItemObject");
        const std::size_t uuid = idl.rfind("uuid(", begin) + 5;
        identifier = idl.substr(uuid, 36);
        const std::string body = idl.substr(begin, idl.find('}', begin) - begin);
        const std::regex getter("HRESULT ([A-Za-z0-9]+)\\(");
        for (auto at = std::sregex_iterator(body.begin(), body.end(), getter); at != std::sregex_iterator(); ++at) {
            properties.push_back((*at)[1]);
        }
    }

    std::string identifier;
    std::vector<std::string> properties;
};

/// The first of the words in a text, in any case.
std::size_t place_of(const std::string& text, const std::string& word) {
    std::smatch found;
    const std::regex pattern(word, std::regex::icase);
    return std::regex_search(text, found, pattern) ? static_cast<std::size_t>(found.position()) : std::string::npos;
}

TEST_CASE("Every sample host asks for client-side cursors before it opens, posts in a transaction, and lets go") {
    int hosts = 0;
    for (const std::string& name : sample_names()) {
        if (name == "StockBillItem.cls") continue;  // a line alone
        INFO(name);
        ++hosts;
        const std::string text = content_of("examples/hosts/" + name);
        const std::size_t cursor = place_of(text, "connection\\.CursorLocation :?= \\$?(ad_?Use_?Client|clUseClient)");
        const std::size_t open = place_of(text, "connection\\.Open");
        const std::size_t begin = place_of(text, "\\.BeginTrans");
        const std::size_t commit = place_of(text, "\\.CommitTrans");
        const std::size_t rollback = place_of(text, "\\.RollbackTrans");
        CHECK(cursor < open);
        CHECK(open < begin);
        CHECK(begin < commit);
        CHECK(commit != std::string::npos);
        CHECK(rollback != std::string::npos);
        const std::size_t let_go =
            place_of(text, "ADOConn :?= (\\$?null|Nothing|None|OleVariant\\(IDispatch\\(nil\\)\\))");
        CHECK(let_go != std::string::npos);
        CHECK(let_go > rollback);
    }
    CHECK(hosts == 7);
}

TEST_CASE("A sample's line class has every property of its interface, in the interface's order") {
    const LineInterface declared;
    REQUIRE(declared.properties.size() == 11);
    struct Sample {
        const char* file;
        const char* before;  ///< what stands before a getter's name
        bool has_identifier;
    };
    for (const Sample& sample :
         {Sample{"StockBillItem.cls", "Property Get StockBillItemObject_", false},
          Sample{"save_line.ps1", "\\)\\] [a-z]+ ", true}, Sample{"save_line.cs", "\\)\\] [a-z]+ ", true},
          Sample{"SaveLine.pas", "    function Get_", true}}) {
        INFO(sample.file);
        const std::string text = content_of(std::string("examples/hosts/") + sample.file);
        CHECK((text.find(declared.identifier) != std::string::npos) == sample.has_identifier);
        std::size_t last = 0;
        for (const std::string& property : declared.properties) {
            INFO(property);
            const std::size_t place = place_of(text, sample.before + property + "\\b");
            CHECK(place != std::string::npos);
            CHECK(place > last);
            last = place;
        }
    }
    for (const char* file : {"save_line.js", "save_line.py"}) {
        INFO(file);
        const std::string text = content_of(std::string("examples/hosts/") + file);
        for (const std::string& property : declared.properties) CHECK(text.find(property) != std::string::npos);
    }
}

TEST_CASE("The page about hosts names every sample, and says which of them were never run") {
    const std::string page = content_of("docs/hosts.md");
    const std::string runs = content_of("tests/com/script_host_test.cpp");
    for (const std::string& name : sample_names()) {
        INFO(name);
        const std::size_t place = page.find("(../examples/hosts/" + name + ")");
        REQUIRE(place != std::string::npos);
        const std::size_t line = page.rfind('\n', place) + 1;
        const bool says_not_run =
            page.substr(line, page.find('\n', place) - line).find("**not run**") != std::string::npos;
        const bool is_run = runs.find('"' + name + '"') != std::string::npos;
        CHECK(says_not_run != is_run);
    }
}

}  // namespace
