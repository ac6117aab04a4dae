#include "tool/output/repair_script.h"

#include "tool/output/sql_comment.h"
#include "tool/output/verify_report.h"

namespace vantlo {

std::string script_of(const std::vector<Repair>& repairs, const std::string& dialect, Language language) {
    if (repairs.empty()) return {};
    std::string script;
    // Without it MariaDB reads a backslash in a literal as an escape.
    if (dialect == "mariadb") script += "set sql_mode=concat(@@sql_mode,',NO_BACKSLASH_ESCAPES');\n";
    const bool has_transactions = dialect != "access";
    if (has_transactions) script += dialect == "sqlserver" ? "begin transaction;\n" : "begin;\n";
    const auto comment = [&](const Repair& repair) { return sql_comment(cause_text(repair.cause, language)); };
    for (const Repair& repair : repairs) {
        if (!repair.removal.empty()) script += comment(repair) + to_utf8(repair.removal) + ";\n";
    }
    for (const Repair& repair : repairs) {
        for (const Text& statement : repair.statements) script += comment(repair) + to_utf8(statement) + ";\n";
    }
    return script + (has_transactions ? "commit;\n" : "");
}

}  // namespace vantlo
