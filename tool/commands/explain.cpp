#include <algorithm>
#include <iostream>

#include "audit/member_sample.h"
#include "output/table_output.h"
#include "tool/commands/command.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message explain_about  = {"说明组件的一个过账成员", "Explain a posting member of the component"};
constexpr Message explain_example = {"说明 In_AddInventory", "Explain In_AddInventory"};
constexpr Message explain_list_example = {"列出所有过账成员", "List all posting members"};
constexpr Message member_name    = {"成员名称；省略时列出全部", "The member's name; without it all are listed"};
constexpr Message unknown_member = {"没有成员“{}”；运行 vantlo explain 列出全部", "there is no member \"{}\"; vantlo explain lists them"};
constexpr Message posts_a_line   = {"对一行单据过账：", "For one line of a bill, it moves:"};
constexpr Message posts_a_bill   = {"对一张已保存单据的每一行过账：", "For each line of a stored bill, it moves:"};
constexpr Message posts_a_header = {"对一张已保存单据的表头过账：", "For the header of a stored bill, it moves:"};
constexpr Message called_for     = {"用于：", "Called for"};
constexpr Message to_post        = {"过账", "to post it"};
constexpr Message to_take_back   = {"冲回", "to take it back"};

constexpr Message of_line        = {"行的 {}", "the line's {}"};
constexpr Message of_header      = {"表头的 {}", "the bill's {}"};
constexpr Message by_origin      = {"由{}决定", "by {}"};
constexpr Message in_base_units  = {"{}，基本单位", "{} in base units"};
constexpr Message as_it_stands   = {"{}，原样", "{} as it stands"};
constexpr Message as_it_stands_when_new = {"{}，基本单位；新行原样", "{} in base units; as it stands on a new row"};
constexpr Message base_units_when_new = {"{}，原样；新行按基本单位", "{} as it stands; in base units on a new row"};

constexpr Message existing_row   = {"{} 已有台账行时：{}。", "Where {} has the row already: {}."};
constexpr Message statuses_by    = {"状态由{}决定：{}。", "Statuses by {}: {}."};
constexpr Message comma          = {"，", ", "};
constexpr Message any_other      = {"其他", "any other"};
constexpr Message remarks        = {"已有台账行的备注被覆盖。", "The remarks of an existing row are overwritten."};
constexpr Message filters        = {"指定 {} 时，只处理商品的 {} 与之相同的行。", "With {}, only the lines whose goods have it as their {}."};
constexpr Message magnitude      = {"总是按数量的绝对值过账。", "The magnitude of the quantity is posted."};
constexpr Message magnitude_on_request = {"{} 为 True 时按数量的绝对值过账。", "With {} True the magnitude of the quantity is posted."};
constexpr Message rounded_once   = {"数量先乘换算率，再舍入到四位小数。", "The quantity is multiplied by the factor before it is rounded to four decimals."};
constexpr Message null_fails     = {"空数量使过账失败。", "A null quantity fails."};
constexpr Message null_empties   = {"空数量使台账的数量变为空。", "A null quantity makes quantities of the ledger null."};
constexpr Message without_header = {"单据没有表头时返回 {}。", "The result is {} for a bill without a header."};
constexpr Message silent         = {"失败时不显示消息。", "A failure shows no message."};
// clang-format on

}  // namespace words

namespace {

const char* type_name(ParameterType type) {
    switch (type) {
        case ParameterType::text: return "String";
        case ParameterType::integer: return "Integer";
        case ParameterType::boolean: return "Boolean";
        case ParameterType::long_integer: return "Long";
        case ParameterType::line:
        case ParameterType::none: break;
    }
    return "";
}

const char* line_type_name(LineType type) {
    switch (type) {
        case LineType::StockBillItemObject: return "StockBillItemObject";
        case LineType::LossOverItemObject: return "LossOverItemObject";
        case LineType::RGStockItemObject: return "RGStockItemObject";
        case LineType::BorrowItemObject: return "BorrowItemObject";
        case LineType::none: break;
    }
    return "";
}

std::string parameter_text(const Parameter& parameter) {
    const bool is_line = parameter.type == ParameterType::line;
    std::string text =
        to_utf8(parameter.name) + " As " + (is_line ? line_type_name(parameter.line_type) : type_name(parameter.type));
    if (!parameter.optional) return text;
    if (parameter.type == ParameterType::text) return "[" + text + " = \"\"]";
    if (parameter.type == ParameterType::boolean)
        return "[" + text + (parameter.default_number == 0 ? " = False]" : " = True]");
    return "[" + text + " = " + std::to_string(parameter.default_number) + "]";
}

std::string declaration(const Member& member) {
    std::string parameters;
    for (const Parameter& parameter : member.parameters()) {
        parameters += (parameters.empty() ? "" : ", ") + parameter_text(parameter);
    }
    return to_utf8(member.name) + "(" + parameters + ") As Long";
}

bool is_fed_a_line(const Member& member) { return member.parameters().front().type == ParameterType::line; }

/// The kinds of bills for which vantlo calls a member, with what it is called for.
std::string callers(TextView member, const CommonOptions& common) {
    std::string text;
    const auto add = [&](const BillKind& kind, std::span<const MemberCall> calls, const Message& purpose) {
        if (!std::ranges::any_of(calls, [&](const MemberCall& call) { return member == call.member; })) return;
        text += fmt::format("  {} {}: {}\n", kind.name, kind.chinese_name, common.say(purpose));
    };
    for (const BillKind& kind : bill_kinds()) {
        add(kind, kind.post, words::to_post);
        add(kind, kind.reversal, words::to_take_back);
    }
    return text;
}

std::string text_of(const Origin& origin, const CommonOptions& common) {
    const std::string name = to_utf8(origin.name);
    if (origin.place == Origin::Place::line) return common.say(words::of_line, name);
    if (origin.place == Origin::Place::header) return common.say(words::of_header, name);
    return name;
}

std::string status_text(const StatusRule& status, const CommonOptions& common) {
    const std::string origin = text_of(status.origin, common);
    return status.translated.empty() ? origin : common.say(words::by_origin, origin);
}

std::string quantity_text(const SampleMovement& movement, const CommonOptions& common) {
    const bool is_new_converted = movement.new_row.in_base_units;
    const bool is_converted = movement.existing_row.in_base_units;
    const Message& wording = is_new_converted == is_converted
                                 ? (is_converted ? words::in_base_units : words::as_it_stands)
                                 : (is_converted ? words::as_it_stands_when_new : words::base_units_when_new);
    return common.say(wording, to_utf8(movement.new_row.quantity.name));
}

std::string movements_table(const MemberSample& sample, const CommonOptions& common) {
    TableOutput table({{common.say(words::warehouse)},
                       {common.say(words::status)},
                       {common.say(words::received)},
                       {common.say(words::issued)},
                       {common.say(words::on_hand)},
                       {common.say(words::quantity)}});
    for (const SampleMovement& movement : sample.movements) {
        const auto sign = [&](Counter counter) {
            const int direction = movement.new_row.counters.at(static_cast<std::size_t>(counter)).sign;
            return direction > 0 ? "+" : direction < 0 ? "-" : "";
        };
        table.add_row({text_of(movement.warehouse, common), status_text(movement.status, common),
                       sign(Counter::received), sign(Counter::issued), sign(Counter::on_hand),
                       quantity_text(movement, common)});
    }
    return table.text();
}

/// What a movement makes of the counters of an existing row; empty where it is what it makes of a new one.
/// Example  `Received = Issued - Quantity, On hand = On hand + Quantity`
std::string existing_row_text(const SampleMovement& movement, const CommonOptions& common) {
    if (movement.existing_row.counters == movement.new_row.counters) return "";
    const Message* const names[] = {&words::received, &words::issued, &words::on_hand};
    std::string text;
    for (std::size_t counter = 0; counter < std::size(names); ++counter) {
        const auto [from, sign] = movement.existing_row.counters.at(counter);
        if (sign == 0) continue;
        text += fmt::format("{}{} = {} {} {}", text.empty() ? "" : common.say(words::comma),
                            common.say(*names[counter]), common.say(*names[static_cast<std::size_t>(from)]),
                            sign > 0 ? '+' : '-', common.say(words::quantity));
    }
    return text;
}

/// The statuses of all movements for each value of their origin, those that differ from the last.
/// Example  `1: 0→1, 2: 0→2, any other: 0→0`
std::string translation_text(const MemberSample& sample, const CommonOptions& common) {
    const auto statuses = [&](std::size_t value) {
        std::vector<std::string> texts;
        for (const SampleMovement& movement : sample.movements)
            texts.push_back(to_utf8(movement.status.translated.at(value)));
        return fmt::format("{}", fmt::join(texts, "→"));
    };
    const std::size_t last = sample.movements.front().status.translated.size() - 1;
    std::string text;
    for (std::size_t value = 0; value < last; ++value) {
        if (statuses(value) != statuses(last))
            text += fmt::format("{}: {}", value, statuses(value)) + common.say(words::comma);
    }
    return text + common.say(words::any_other) + ": " + statuses(last);
}

/// What the table does not show, each on a line of its own.
std::string notes(const Member& member, const MemberSample& sample, const CommonOptions& common) {
    std::string text;
    const auto add = [&](const std::string& note) { text += note + "\n"; };
    for (const SampleMovement& movement : sample.movements) {
        const std::string existing = existing_row_text(movement, common);
        if (!existing.empty()) add(common.say(words::existing_row, text_of(movement.warehouse, common), existing));
    }
    const StatusRule& status = sample.movements.front().status;
    if (!status.translated.empty())
        add(common.say(words::statuses_by, text_of(status.origin, common), translation_text(sample, common)));
    if (std::ranges::any_of(sample.movements, &SampleMovement::overwrites_remarks)) add(common.say(words::remarks));
    for (const LineFilter& filter : sample.filters)
        add(common.say(words::filters, to_utf8(filter.parameter), to_utf8(filter.goods_column)));
    if (sample.sign_of_quantity == MemberSample::Sign::dropped) add(common.say(words::magnitude));
    if (sample.sign_of_quantity == MemberSample::Sign::dropped_on_request)
        add(common.say(words::magnitude_on_request, to_utf8(sample.magnitude_parameter)));
    if (sample.is_rounded_once) add(common.say(words::rounded_once));
    const bool null_fails = sample.null_quantity == MemberSample::NullQuantity::fails;
    add(common.say(null_fails ? words::null_fails : words::null_empties));
    if (sample.result_without_bill != 0) add(common.say(words::without_header, sample.result_without_bill));
    if (member.on_error == OnError::stay_silent) add(common.say(words::silent));
    return text;
}

void explain(const Member& member, const CommonOptions& common) {
    const MemberSample sample = sample_member(member);
    const bool posts_header = sample.movements.front().new_row.quantity.place == Origin::Place::header;
    const Message& input = is_fed_a_line(member) ? words::posts_a_line
                           : posts_header        ? words::posts_a_header
                                                 : words::posts_a_bill;
    std::cout << declaration(member) << "\n\n"
              << common.say(input) << "\n\n"
              << movements_table(sample, common) << '\n'
              << notes(member, sample, common) << '\n'
              << common.say(words::called_for) << '\n'
              << callers(member.name, common);
}

void list_members() {
    for (const Member& member : member_table()) {
        if (member.kind == MemberKind::method) std::cout << to_utf8(member.name) << '\n';
    }
}

ExitCode explain_member(const CommonOptions& common, const std::string& name) {
    if (name.empty()) {
        list_members();
        return ExitCode::done;
    }
    const Member* const member = find_method(from_utf8(name));
    if (member == nullptr) {
        std::cerr << "vantlo: " << common.say(words::unknown_member, name) << '\n';
        return ExitCode::usage;
    }
    explain(*member, common);
    return ExitCode::done;
}

}  // namespace

void add_explain(CLI::App& app, CommandCall& call) {
    const CommonOptions& common = call.common;
    CLI::App* const command = add_command(
        app, common, "explain", words::explain_about,
        {{"vantlo explain In_AddInventory", words::explain_example}, {"vantlo explain", words::explain_list_example}});
    const auto name = std::make_shared<std::string>();
    command->add_option("MEMBER", *name, common.say(words::member_name));
    command->callback(
        [&call, name] { call.work = [&common = call.common, name] { return explain_member(common, *name); }; });
}

}  // namespace vantlo
