// Checks that parameterizing its literals does not change what a statement does on SQLite. An input is statements, a line
// each.

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include "support/paired_connections.h"

namespace {

using namespace vantlo;
using namespace vantlo::test;

/// True if a statement may answer differently on two equal databases, touch files, or not end.
bool is_out_of_bounds(const Text& statement) {
    static constexpr TextView words[] = {u"random", u"now",    u"current_", u"sqlite_stmt", u"attach",
                                         u"vacuum", u"pragma", u"load_",    u"recursive",   u"index",
                                         u"date",   u"time",   u"julian",   u"zeroblob",    u"with"};
    return std::ranges::any_of(words, [&](TextView word) {
        for (std::size_t i = 0; i + word.size() <= statement.size(); ++i) {
            if (equal_ignoring_case(TextView(statement).substr(i, word.size()), word)) return true;
        }
        return false;
    });
}

void require(bool is_same, const Text& statement, const PairedConnections& pair) {
    if (is_same) return;
    std::cerr << "differs: " << to_utf8(statement) << "\nparameterized: " << pair.parameterized.failure.account
              << "\nplain:  " << pair.plain.failure.account << '\n';
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    PairedConnections pair;
    pair.run_script(tables_of_many_kinds);
    for (std::string_view rest(reinterpret_cast<const char*>(bytes), size); !rest.empty();) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        const Text statement = from_utf8(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (!is_out_of_bounds(statement)) require(pair.run(statement), statement, pair);
    }
    for (const Text ledger : {u"select * from A", u"select * from B", u"select * from Log"}) {
        require(pair.run(ledger), ledger, pair);
    }
    return 0;
}
