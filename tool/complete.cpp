#include "tool/complete.h"

#include <unistd.h>

#include <iostream>

#include "output/visible.h"
#include "reports/selection.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message complete_about = {"供命令行补全使用", "For the completion of a shell"};
// clang-format on

}  // namespace words

namespace {

constexpr unsigned longest_wait_seconds = 2;
constexpr std::size_t most_names = 500;

struct Column {
    const char16_t* table;
    const char16_t* column;
};

struct Source {
    std::string_view what;
    std::vector<Column> columns;
};

/// Where names of a sort stand: a shop need not keep master data.
std::vector<Column> columns_of(std::span<const std::string> what) {
    const Source sources[] = {
        {"warehouse", {{u"Warehouse", u"ID"}, {u"Inventory", u"WID"}}},
        {"goods", {{u"Goods", u"ID"}, {u"Inventory", u"GId"}}},
        {"class", {{u"Goods", u"Class"}, {u"Inventory", u"Class"}}},
    };
    for (const Source& source : sources) {
        if (what.size() == 1 && what.front() == source.what) return source.columns;
    }
    const BillKind* const kind = what.size() == 2 && what.front() == "bill" ? find_bill_kind(what.back()) : nullptr;
    if (kind == nullptr) return {};
    return {{kind->header->name, kind->header->id_column}};
}

/// The query of the names that begin with a text; the engine may find more, as its rule of capitals has it.
Text query_of(std::span<const std::string> what, const std::string& typed) {
    const bool has_signs = typed.find_first_of("*?") != std::string::npos;
    const std::vector<Text> pattern = {from_utf8(typed) + u"*"};
    Text query;
    for (const Column& column : columns_of(what)) {
        if (!query.empty()) query += u" union ";
        query += Text(u"select ") + column.column + u" as N from " + column.table + u" where 1=1";
        if (!has_signs) query += and_matches(column.column, pattern);
        if (what.size() == 2) query += u" and Kind='" + from_utf8(what.back()) + u"'";
    }
    return query.empty() ? query : query + u" order by 1";
}

ExitCode complete(const CommonOptions& common, std::vector<std::string> what) {
    ::alarm(longest_wait_seconds);  // ends the program
    if (what.empty()) return ExitCode::done;
    const std::string typed = what.back();
    what.pop_back();
    try {
        const Text query = query_of(what, typed);
        if (query.empty()) return ExitCode::done;
        const RecordsetVariable rows = common.read()->execute(query);
        for (std::size_t shown = 0; shown < most_names && !rows->eof(); rows->move_next()) {
            const Variant value = rows->field(u"N");
            const std::string name = value.is<Text>() ? to_utf8(to_text(value)) : "";
            if (name.empty() || !name.starts_with(typed) || visible(name) != name) continue;
            std::cout << name << '\n';
            ++shown;
        }
    } catch (const Failure&) {
        // Without a database there is nothing to complete.
    }
    return ExitCode::done;
}

}  // namespace

void add_complete_command(CLI::App& app, CommandCall& call) {
    CLI::App* const command = app.add_subcommand("complete", call.common.say(words::complete_about));
    command->group("");
    const auto what = std::make_shared<std::vector<std::string>>();
    command->add_option("WHAT", *what)->required();
    command->callback([&call, what] { call.work = [&common = call.common, what] { return complete(common, *what); }; });
}

}  // namespace vantlo
