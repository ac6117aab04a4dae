#include "reports/bill_fields.h"
#include "tool/commands/command.h"
#include "tool/commands/list_options.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message fields_about   = {"每种单据有哪些字段，哪些必填", "The fields of each kind of bill, and which it needs"};
constexpr Message fields_example = {"入库单的字段", "The fields of a stock-in bill"};
constexpr Message fields_kind    = {"单据种类；缺省为全部", "Kind of bill; all of them by default"};
constexpr Message of_header      = {"表头", "header"};
constexpr Message of_line        = {"行", "line"};
constexpr Message is_needed      = {"必填", "needed"};
constexpr Message is_warehouse   = {"必填：仓库编号", "needed: a warehouse's id"};
constexpr Message is_optional    = {"可选", "optional"};
constexpr Message type_text      = {"文字", "text"};
constexpr Message type_number    = {"数字", "number"};
constexpr Message type_whole     = {"整数", "whole number"};
constexpr Message type_date      = {"日期", "date"};
// clang-format on

}  // namespace words

namespace {

const Message& name_of(FieldNeed need) {
    switch (need) {
        case FieldNeed::needed: return words::is_needed;
        case FieldNeed::warehouse: return words::is_warehouse;
        case FieldNeed::optional: break;
    }
    return words::is_optional;
}

const Message& name_of(ColumnType type) {
    switch (type) {
        case ColumnType::single: return words::type_number;
        case ColumnType::whole_number: return words::type_whole;
        case ColumnType::date: return words::type_date;
        case ColumnType::text: break;
    }
    return words::type_text;
}

void add_fields_of(Listing& list, const BillKind& kind, Language language) {
    const auto cell = [](std::string_view text) { return Variant(from_utf8(text)); };
    for (const BillField& field : fields_of(kind)) {
        const Message& part = field.part == BillPart::header ? words::of_header : words::of_line;
        list.rows.push_back({cell(kind.name), cell(part.in(language)), cell(field.field),
                             cell(name_of(field.type).in(language)), cell(name_of(field.need).in(language))});
    }
}

ExitCode show_fields(const CommonOptions& common, const std::string& kind_name, const ListOptions& options) {
    Listing list{{{"kind", CellType::text},
                  {"part", CellType::text},
                  {"field", CellType::text},
                  {"type", CellType::text},
                  {"need", CellType::text}},
                 {}};
    if (kind_name.empty()) {
        for (const BillKind& kind : bill_kinds()) add_fields_of(list, kind, common.language);
    } else {
        const BillKind* const kind = known_kind(common, kind_name);
        if (kind == nullptr) return ExitCode::usage;
        add_fields_of(list, *kind, common.language);
    }
    return write_list(list, options, common);
}

}  // namespace

void add_fields(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command =
        add_command(app, common, "fields", words::fields_about, {{"vantlo fields stock-in", words::fields_example}});
    const auto kind = std::make_shared<std::string>();
    command->add_option("KIND", *kind, common.say(words::fields_kind))->type_name("");
    const auto options = add_list_options(*command, common);
    command->callback([&call, kind, options] {
        call.work = [&common = call.common, kind, options] { return show_fields(common, *kind, *options); };
    });
}

}  // namespace vantlo
