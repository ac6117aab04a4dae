#include <fmt/ranges.h>

#include <iostream>

#include "automation/calendar.h"
#include "reports/bill_fields.h"
#include "reports/movements.h"
#include "tool/commands/command.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message new_about   = {"写出一张空白单据文件，填好后用 vantlo save 保存", "Print an empty bill file, to be filled in and saved by vantlo save"};
constexpr Message new_example = {"一张空白的入库单", "An empty stock-in bill"};
constexpr Message new_csv_example = {"同样，但为表格程序所用的 CSV", "The same as CSV, for a spreadsheet"};
constexpr Message new_format  = {"格式：json 或 csv", "Format: json or csv"};
// clang-format on

}  // namespace words

namespace {

std::string today() { return to_utf8(format_date(local_now())); }

/// What stands for a field that is to be filled in.
std::string json_value(const BillField& field) {
    switch (field.type) {
        case ColumnType::date: return '"' + today() + '"';
        case ColumnType::single:
        case ColumnType::whole_number: return "0";
        case ColumnType::text: break;
    }
    return "\"\"";
}

std::string json_members(const BillKind& kind, BillPart part) {
    std::vector<std::string> members;
    for (const BillField& field : fields_of(kind)) {
        if (field.part == part) members.push_back(fmt::format("\"{}\": {}", field.field, json_value(field)));
    }
    return fmt::format("{}", fmt::join(members, ", "));
}

std::string json_skeleton(const BillKind& kind) {
    return fmt::format("{{\"bills\": [\n  {{\"kind\": \"{}\", \"id\": \"\", {}, \"lines\": [\n    {{{}}}\n  ]}}\n]}}\n",
                       kind.name, json_members(kind, BillPart::header), json_members(kind, BillPart::line));
}

/// The heading, and one row with what is known: kind and day.
std::string csv_skeleton(const BillKind& kind) {
    std::string heading = "bill.kind,bill.id", row = std::string(kind.name) + ",";
    for (const BillField& field : fields_of(kind)) {
        heading += (field.part == BillPart::header ? ",bill." : ",") + std::string(field.field);
        row += field.type == ColumnType::date ? "," + today() : ",";
    }
    return heading + "\r\n" + row + "\r\n";
}

}  // namespace

void add_new(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command = add_command(app, common, "new", words::new_about,
                                          {{"vantlo new stock-in > bill.json", words::new_example},
                                           {"vantlo new stock-in --format csv > bill.csv", words::new_csv_example}});
    const auto kind_name = std::make_shared<std::string>();
    const auto format = std::make_shared<std::string>("json");
    command->add_option("KIND", *kind_name, common.say(words::bill_kind))->required()->type_name("");
    command->add_option("--format", *format, common.say(words::new_format))
        ->check(CLI::IsMember({"json", "csv"}))
        ->type_name("FORMAT");
    command->callback([&call, kind_name, format] {
        call.work = [&common = call.common, kind_name, format] {
            const BillKind* const kind = known_kind(common, *kind_name);
            if (kind == nullptr) return ExitCode::usage;
            std::cout << (*format == "csv" ? csv_skeleton(*kind) : json_skeleton(*kind));
            return ExitCode::done;
        };
    });
}

}  // namespace vantlo
