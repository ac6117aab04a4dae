#include <doctest/doctest.h>

#include "tests/support/transcript.h"

namespace vantlo::test {
namespace {

TEST_CASE("The commands of docs/verify.md print what it shows") {
    for (const DocumentPage& page : both_languages("docs/verify")) {
        CAPTURE(page.name);
        const std::vector<std::string> blocks = fenced_blocks(text_of(page.name));
        REQUIRE(blocks.size() == 1);
        const Shell shell;
        shell.file("examples/box.json", text_of(VANTLO_SOURCE_DIR "/examples/box.json"));
        CHECK(run_transcript(shell, blocks[0], page.locale) == blocks[0]);
    }
}

}  // namespace
}  // namespace vantlo::test
