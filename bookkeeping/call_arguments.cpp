#include "bookkeeping/call_arguments.h"

namespace vantlo {

namespace {

/// Header fields that a call is fed, by what they are.
const Variant& header_field(const Bill& bill, Feed feed) {
    if (feed == Feed::header_receiver) return bill.header.value(u"Receiver");
    if (feed == Feed::header_supplier) return bill.header.value(u"Supplier");
    return bill.header.value(u"ReferFlag");
}

Argument argument_for(Feed feed, const Bill& bill, Line* line) {
    switch (feed) {
        case Feed::line: return *line;
        case Feed::id: return bill.id;
        case Feed::any_class: return Text();
        case Feed::any_main_goods_flag: return std::int16_t{-1};
        case Feed::magnitude: return VariantBool::exactly_true;
        case Feed::signed_quantity: return VariantBool::exactly_false;
        case Feed::header_status:
        case Feed::header_receiver:
        case Feed::header_supplier: break;
    }
    return header_field(bill, feed);
}

}  // namespace

bool is_fed_lines(const MemberCall& call) { return call.arguments.front() == Feed::line; }

std::vector<Argument> arguments_for(const MemberCall& call, const Bill& bill, Line* line) {
    std::vector<Argument> arguments;
    for (const Feed feed : call.arguments) arguments.push_back(argument_for(feed, bill, line));
    return arguments;
}

}  // namespace vantlo
