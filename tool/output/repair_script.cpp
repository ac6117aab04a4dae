#include "tool/output/repair_script.h"

#include "tool/output/sql_comment.h"
#include "tool/output/verify_report.h"

namespace vantlo {

std::string script_of(const std::vector<Repair>& repairs, const Dialect& dialect, Language language) {
    if (repairs.empty()) return {};
    std::string script;
    if (dialect.plain_backslashes != nullptr) script += to_utf8(dialect.plain_backslashes) + ";\n";
    script += dialect.begin_transaction;
    const auto comment = [&](const Repair& repair) { return sql_comment(cause_text(repair.cause, language)); };
    for (const Repair& repair : repairs) {
        if (!repair.removal.empty()) script += comment(repair) + to_utf8(repair.removal) + ";\n";
    }
    for (const Repair& repair : repairs) {
        for (const Text& statement : repair.statements) script += comment(repair) + to_utf8(statement) + ";\n";
    }
    return script.append(dialect.commit_transaction);
}

}  // namespace vantlo
