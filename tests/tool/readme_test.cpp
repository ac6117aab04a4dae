#include <doctest/doctest.h>

#include "tests/support/transcript.h"

// The README's transcript is run and compared.

namespace vantlo::test {
namespace {

TEST_CASE("The README's commands print what the README shows") {
    for (const DocumentPage& page : both_languages("README")) {
        CAPTURE(page.name);
        const std::vector<std::string> blocks = fenced_blocks(text_of(page.name));
        REQUIRE(blocks.size() == 2);
        const Shell shell;
        shell.file("examples/box.json", text_of(VANTLO_SOURCE_DIR "/examples/box.json"));
        CHECK(run_transcript(shell, blocks[0], page.locale) == blocks[0]);

        const Finished sent = shell.vantlo("--show-sql --db shown.db init && " + shell.program() +
                                           " --show-sql --db shown.db save examples/box.json");
        CHECK_MESSAGE(sent.output.find(blocks[1]) != std::string::npos, sent.output);
    }
}

}  // namespace
}  // namespace vantlo::test
