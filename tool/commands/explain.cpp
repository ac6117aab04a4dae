#include <algorithm>
#include <iostream>

#include "component/member_table.h"
#include "tool/commands/command.h"
#include "tool/output/member_guide.h"
#include "tool/output/table_output.h"

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
constexpr Message called_for     = {"用于：", "Called for"};
constexpr Message to_post        = {"过账", "to post it"};
constexpr Message to_take_back   = {"冲回", "to take it back"};
constexpr Message status_of_bill = {"表头的 ReferFlag", "the bill's ReferFlag"};
constexpr Message status_of_line = {"行上的状态", "the line's own"};
constexpr Message status_of_source = {"转换前", "before the conversion"};
constexpr Message status_of_target = {"转换后", "after the conversion"};
constexpr Message in_base_units  = {"基本单位", "in base units"};
constexpr Message as_it_stands   = {"行上的数量", "as it stands"};
constexpr Message as_it_stands_when_new = {"基本单位；新行按行上的数量", "in base units; as it stands on a new row"};
constexpr Message base_units_when_new = {"行上的数量；新行按基本单位", "as it stands; in base units on a new row"};
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

std::string status_text(const MemberMove& move, const Member& member, const CommonOptions& common) {
    switch (move.status) {
        case StatusFrom::zero: return "0";
        case StatusFrom::one: return "1";
        case StatusFrom::two: return "2";
        case StatusFrom::argument: return to_utf8(member.parameters().back().name);
        case StatusFrom::bill: return common.say(words::status_of_bill);
        case StatusFrom::line: return common.say(words::status_of_line);
        case StatusFrom::conversion_source: return common.say(words::status_of_source);
        case StatusFrom::conversion_target: break;
    }
    return common.say(words::status_of_target);
}

const Message& quantity_wording(QuantityAs quantity) {
    switch (quantity) {
        case QuantityAs::base_units: return words::in_base_units;
        case QuantityAs::as_it_stands: return words::as_it_stands;
        case QuantityAs::as_it_stands_when_new: return words::as_it_stands_when_new;
        case QuantityAs::base_units_when_new: break;
    }
    return words::base_units_when_new;
}

std::string moves_table(const MemberGuide& guide, const Member& member, const CommonOptions& common) {
    TableOutput table({{common.say(words::warehouse)},
                       {common.say(words::status)},
                       {common.say(words::received)},
                       {common.say(words::issued)},
                       {common.say(words::on_hand)},
                       {common.say(words::quantity)}});
    const auto sign = [](int direction) { return direction > 0 ? "+" : direction < 0 ? "-" : ""; };
    for (const MemberMove& move : guide.moves) {
        const Signs signs = signs_of(move.move);
        table.add_row({to_utf8(move.warehouse), status_text(move, member, common), sign(signs.received),
                       sign(signs.issued), sign(signs.on_hand), common.say(quantity_wording(move.quantity))});
    }
    return table.text();
}

void explain(const Member& member, const MemberGuide& guide, const CommonOptions& common) {
    std::cout << declaration(member) << "\n\n"
              << common.say(is_fed_a_line(member) ? words::posts_a_line : words::posts_a_bill) << "\n\n"
              << moves_table(guide, member, common) << '\n';
    if (guide.note != nullptr) std::cout << common.say(*guide.note) << "\n\n";
    std::cout << common.say(words::called_for) << '\n' << callers(member.name, common);
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
    explain(*member, *std::ranges::find(member_guides(), TextView(member->name), &MemberGuide::member), common);
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
