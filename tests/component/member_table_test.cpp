#include "component/member_table.h"

#include <doctest/doctest.h>

#include <iterator>
#include <set>
#include <string>

namespace vantlo::test {
namespace {

TEST_CASE("The first 44 members are the first interface's: four property procedures and 40 bound methods") {
    constexpr int of_first_interface = 44;
    REQUIRE(std::ssize(member_table()) >= of_first_interface);
    int methods = 0;
    for (const Member& member : member_table()) {
        INFO(to_utf8(member.name));
        CHECK((member.kind == MemberKind::method) == (member.posting != nullptr));
        if (member.number < of_first_interface) methods += member.kind == MemberKind::method ? 1 : 0;
    }
    CHECK(methods == 40);
}

TEST_CASE("Methods are numbered and identified without a gap, properties by their own identifiers") {
    const auto table = member_table();
    CHECK(table[0].dispatch_id == 0x68030001);
    CHECK(table[1].dispatch_id == 0x68030001);
    CHECK(table[2].dispatch_id == 0x68030000);
    CHECK(table[3].dispatch_id == 0x68030000);
    for (std::size_t i = 4; i < table.size(); ++i) {
        CHECK(table[i].number == static_cast<int>(i));
        CHECK(table[i].dispatch_id == 0x60030000 + i - 2);
    }
}

TEST_CASE("Every method has a name of its own and is found by it in any case") {
    std::set<std::u16string> names;
    for (const Member& member : member_table()) {
        if (member.kind != MemberKind::method) continue;
        CHECK(names.insert(member.name).second);
        CHECK(find_method(member.name) == &member);
    }
    CHECK(find_method(u"addinventory_db") == find_method(u"AddInventory_Db"));
    CHECK(find_method(u"DATAType") == nullptr);
}

TEST_CASE("Optional parameters stand behind the required ones and carry their defaults") {
    struct Row {
        const char16_t* method;
        std::size_t parameter;
        const char16_t* name;
        Variant value;
    };
    const Row rows[] = {
        {u"In_AddInventory", 1, u"iCPZT", std::int16_t{0}},
        {u"In_ReduceInventory", 1, u"sZLID", Text()},
        {u"In_ReduceInventory", 2, u"iZYCP", std::int16_t{-1}},
        {u"In_ReduceInventory", 3, u"iCPZT", std::int16_t{0}},
        {u"Out_AddInventory", 1, u"bUseAbs", std::int16_t{0}},
        {u"Out_AddInventory", 2, u"iCPZT", std::int16_t{0}},
        {u"Out_ReduceInventory", 1, u"bUseAbs", std::int16_t{0}},
        {u"Out_ReduceInventory", 2, u"iCPZT", std::int16_t{0}},
        {u"Loss_ReduceInventory", 1, u"iGoodsStatus", std::int16_t{0}},
        {u"Over_AddInventory", 1, u"iGoodsStatus", std::int16_t{0}},
    };
    std::size_t optional = 0;
    for (const Member& member : member_table()) {
        bool seen_optional = false;
        for (const Parameter& parameter : member.parameters()) {
            CHECK((parameter.optional || !seen_optional));
            seen_optional = parameter.optional;
            optional += parameter.optional ? 1U : 0U;
        }
    }
    CHECK(optional == std::size(rows));
    for (const Row& row : rows) {
        const Parameter& parameter = find_method(row.method)->parameters()[row.parameter];
        CHECK(parameter.optional);
        CHECK(Text(parameter.name) == row.name);
        CHECK(parameter.default_value() == row.value);
    }
}

TEST_CASE("The eight assembly and disassembly methods stay silent, all others tell the user") {
    for (const Member& member : member_table()) {
        const TextView name = member.name;
        const bool goods_bill = name.find(u"_ZZD_") != TextView::npos || name.find(u"_CXD_") != TextView::npos;
        CHECK((member.on_error == OnError::stay_silent) == goods_bill);
    }
}

}  // namespace
}  // namespace vantlo::test
