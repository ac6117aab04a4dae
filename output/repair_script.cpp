#include "output/repair_script.h"

#include "output/sql_comment.h"
#include "output/verify_report.h"

namespace vantlo {

namespace {

/// The statements between the beginning and the end of a transaction in the engine's own client.
std::string in_transaction(const std::string& statements, const Dialect& dialect) {
    if (statements.empty()) return {};
    std::string script;
    if (dialect.plain_backslashes != nullptr) script += to_utf8(dialect.plain_backslashes) + ";\n";
    return script.append(dialect.begin_transaction).append(statements).append(dialect.commit_transaction);
}

}  // namespace

std::string script_of(const std::vector<Repair>& repairs, const Dialect& dialect, Language language) {
    std::string script;
    const auto comment = [&](const Repair& repair) { return sql_comment(cause_text(repair.cause, language)); };
    for (const Repair& repair : repairs) {
        if (!repair.removal.empty()) script += comment(repair) + to_utf8(repair.removal) + ";\n";
    }
    for (const Repair& repair : repairs) {
        for (const Text& statement : repair.statements) script += comment(repair) + to_utf8(statement) + ";\n";
    }
    return in_transaction(script, dialect);
}

std::string script_of(const UndoPlan& undo, const Dialect& dialect) {
    std::string script;
    for (const Text& statement : undo.removals) script += to_utf8(statement) + ";\n";
    for (const Text& statement : undo.statements) script += to_utf8(statement) + ";\n";
    return in_transaction(script, dialect);
}

}  // namespace vantlo
