#include <doctest/doctest.h>

#include "bills/bill_kinds.h"
#include "tests/support/transcript.h"

namespace vantlo::test {
namespace {

TEST_CASE("docs/bills.md tells of every kind of bill what vantlo fields tells") {
    const std::string page = text_of(VANTLO_SOURCE_DIR "/docs/bills.md");
    const Shell shell;
    for (const std::string& block : fenced_blocks(page)) CHECK(run_transcript(shell, block) == block);
    for (const BillKind& kind : bill_kinds()) {
        const std::string name(kind.name);
        CHECK_MESSAGE(page.find("$ vantlo fields " + name + "\n") != std::string::npos, name);
        CHECK_MESSAGE(page.find("## " + name + " " + std::string(kind.chinese_name) + "\n") != std::string::npos, name);
    }
}

}  // namespace
}  // namespace vantlo::test
