#include "bills/bill_kinds.h"

#include <doctest/doctest.h>

#include <set>

#include "component/member_table.h"

namespace vantlo {
namespace {

TEST_CASE("Every posting member is reached by a kind of bill") {
    std::set<const Member*> reached;
    for (const BillKind& kind : bill_kinds()) {
        for (const auto calls : {kind.post, kind.reversal}) {
            for (const MemberCall& call : calls) {
                const Member* const member = find_method(call.member);
                REQUIRE(member != nullptr);
                reached.insert(member);
            }
        }
    }
    for (const Member& member : member_table()) {
        if (member.kind == MemberKind::method) CHECK_MESSAGE(reached.contains(&member), to_utf8(member.name));
    }
}

TEST_CASE("Every call is fed what its member's parameters take") {
    for (const BillKind& kind : bill_kinds()) {
        for (const auto calls : {kind.post, kind.reversal}) {
            for (const MemberCall& call : calls) {
                INFO(to_utf8(call.member));
                const auto parameters = find_method(call.member)->parameters();
                REQUIRE(call.arguments.size() <= parameters.size());
                for (std::size_t i = 0; i < parameters.size(); ++i) {
                    if (i >= call.arguments.size()) {
                        CHECK(parameters[i].optional);
                    } else {
                        CHECK((parameters[i].type == ParameterType::line) == (call.arguments[i] == Feed::line));
                    }
                }
            }
        }
    }
}

TEST_CASE("Every kind of bill has a name of its own") {
    std::set<std::string_view> names;
    for (const BillKind& kind : bill_kinds()) {
        CHECK(names.insert(kind.name).second);
        CHECK(find_bill_kind(kind.name) == &kind);
        CHECK(!kind.chinese_name.empty());
    }
    CHECK(find_bill_kind("no-such-kind") == nullptr);
}

}  // namespace
}  // namespace vantlo
