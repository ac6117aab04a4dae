#include "output/card_text.h"

#include "automation/message.h"
#include "output/list_output.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message without_bill   = {"！无单据的变动（{}）", "! without a bill ({})"};
constexpr Message while_off      = {"流水关闭期间的变动", "while the journal was off"};
// clang-format on

}  // namespace words

std::string account_of(const CardEntry& entry, Language language) {
    if (!entry.bill_kind.empty()) return kind_for_people(to_utf8(entry.bill_kind), language);
    if (entry.action == u"gap") return words::while_off.in(language);
    return say(language, words::without_bill, to_utf8(entry.action));
}

std::string by_whom(const CardEntry& entry) {
    const std::string user = to_utf8(entry.user), program = to_utf8(entry.program);
    return user.empty() || program.empty() ? user + program : user + " " + program;
}

}  // namespace vantlo
