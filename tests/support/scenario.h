#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "automation/variant.h"
#include "tests/support/recording.h"

namespace vantlo::test {

/// One row of a table as a scenario gives it: column names with their values.
struct TableRow {
    std::string table;
    std::vector<std::pair<std::string, Variant>> columns;
};

/// A column that a scenario gives another type.
struct ColumnType {
    std::string table;
    std::string column;
    std::string type;
};

/// A posting told as a bill, a call, the statements that it sends and the ledger that it leaves.
///
/// Shape    A text file of lines, each a keyword and its rest; `#` begins a comment line, blank lines separate.
///
///   scenario TITLE                    begins one; the title is a sentence that starts with the member
///   kind TEXT                         DATAType; "[Microsoft SQL Server]" if absent
///   unit GID UNIT FACTOR              a row of GoodsUnit
///   goods ID CLASS FLAG               a row of Goods
///   row TABLE COLUMN=VALUE …          a row of any other table
///   ledger WID GID M1 M2 STATUS | in X out Y current Z [| CLASS UNIT REMARKS]
///                                     before the call a row that is there, after it a row that must be there; all rows
///                                     are named, and the third group is compared where it is given
///   line NAME=VALUE …                 the line object; quantities are Single, statuses Long, the rest text; a value
///                                     written TYPE(TEXT) is of that type: Date(2024-03-05), Decimal(2.5), Boolean(True)
///   project GIVEN                     a `unit`, `row` or `ledger` line for a second database: the connection to it is the
///                                     project-wide one, set through another instance
///   column TABLE NAME TYPE            the column has that type; on SQLite alone
///   empty BEGINNING                   statements that begin so are answered without a row
///   call MEMBER [ARGUMENT …] -> RESULT   `line` passes the line object
///   trace recordsets | reads          compares the trace to that detail; without it statements and messages alone
///   open SQL, execute SQL, message TEXT, prepare, close WHAT, next WHAT, release WHAT, read NAME
///                                     the trace; a message is the text alone, its title and style are always checked;
///                                     what runs on the project-wide connection of a `project` line begins with `project`
///
/// Values: `null`, `''` for the empty text, "…" around blanks, anything else as it stands.
struct Scenario {
    std::string file;
    int line_number = 0;
    std::string title;
    std::string data_type = "[Microsoft SQL Server]";
    std::vector<TableRow> given;
    std::vector<TableRow> given_to_project;
    std::vector<ColumnType> columns;
    std::string without_rows;
    std::map<std::string, Variant> line;
    bool has_line = false;
    std::string member;
    std::vector<std::string> arguments;
    std::int32_t result = 0;
    Detail detail = Detail::statements;
    std::vector<std::string> trace;
    std::vector<std::string> ledger;  ///< the rows that must be there, in the form of ledger_row_text
    bool has_project = false;         ///< whether the project-wide connection is one of its own
    std::vector<std::string> project_ledger;

    /// Where it stands. Example: `stock_in.txt:12 In_AddInventory inserts …`.
    [[nodiscard]] std::string where() const;
};

/// Reads all scenarios of a file. Errors: std::runtime_error naming file and line.
std::vector<Scenario> read_scenarios(const std::string& path);

/// Reads all files `*.txt` of a folder, in the order of their names.
std::vector<Scenario> read_scenario_folder(const std::string& path);

/// The insert statement that puts a given row into its table.
Text insert_text(const TableRow& row);

/// A ledger row as scenarios write it. Example: `W1 G1 red '' 0 | in 34 out 0 current 34 | C1 box 'as new'`.
std::string ledger_row_text(Recordset& ledger);

/// All rows of `select * from Inventory`, sorted.
std::vector<std::string> read_ledger(Connection& connection);

/// Lines as one text, so that a comparison that fails can be read.
std::string joined(const std::vector<std::string>& lines);

/// Whether an expected row, with or without its third group, is the actual one.
bool matches(const std::string& expected_row, const std::string& actual_row);

}  // namespace vantlo::test
