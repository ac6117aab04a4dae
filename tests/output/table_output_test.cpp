#include "output/table_output.h"

#include <doctest/doctest.h>

namespace vantlo {
namespace {

TEST_CASE("cell_width counts two cells for a Chinese character, one for a letter, none for a mark") {
    struct Row {
        const char* text;
        std::size_t cells;
    };
    const Row rows[] = {{"", 0}, {"abc", 3}, {"箱", 2}, {"１２", 4}, {"é", 1}, {"é", 1}, {"𠮷", 2}, {"A5 手机", 7}};
    for (const Row& row : rows) CHECK(cell_width(row.text) == row.cells);
}

TEST_CASE("A table aligns its columns by cells, numbers to the right, totals below a rule") {
    TableOutput table({{"仓库"}, {"结存", TableOutput::Align::right}});
    table.add_row({"主仓库", "7"});
    table.add_row({"W2", "-12.5"});
    table.add_totals({"合计", "-5.5"});
    CHECK(table.text() ==
          "仓库     结存\n"
          "------  -----\n"
          "主仓库      7\n"
          "W2      -12.5\n"
          "------  -----\n"
          "合计     -5.5\n");
}

}  // namespace
}  // namespace vantlo
