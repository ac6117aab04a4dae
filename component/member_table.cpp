#include "component/member_table.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "posting/goods/goods.h"
#include "posting/posting_frame.h"
#include "posting/repair/repair.h"
#include "posting/stock/stock.h"

namespace vantlo {

namespace {

/// One argument converted to the type of the parameter that takes it.
struct Unpacked {
    const Argument& argument;

    operator Line&() const { return *argument.line; }
    operator Text() const { return to_text(argument.value); }
    operator std::int16_t() const { return to_integer(argument.value); }
    operator std::int32_t() const { return to_long(argument.value); }
    operator VariantBool() const { return VariantBool{to_integer(argument.value)}; }
};

/// The type of a parameter while its member runs: a line by reference, everything else by value.
template <typename Type>
struct HeldAs {
    using type = std::remove_cvref_t<Type>;
};
template <>
struct HeldAs<Line&> {
    using type = Line&;
};

template <typename Result, typename... Parameters, std::size_t... index>
std::int32_t unpack_and_call(Result (*posting)(PostingFrame&, Parameters...), PostingFrame& frame,
                             std::span<const Argument> arguments, std::index_sequence<index...>) {
    // Braces make the conversions run from left to right: the first argument that cannot be converted fails.
    std::tuple<typename HeldAs<Parameters>::type...> held{
        static_cast<typename HeldAs<Parameters>::type>(Unpacked{arguments[index]})...};
    if constexpr (std::is_void_v<Result>) {
        posting(frame, std::get<index>(held)...);
        return 0;
    } else {
        return posting(frame, std::get<index>(held)...);
    }
}

template <typename Result, typename... Parameters>
std::int32_t call(Result (*posting)(PostingFrame&, Parameters...), PostingFrame& frame,
                  std::span<const Argument> arguments) {
    return unpack_and_call(posting, frame, arguments, std::index_sequence_for<Parameters...>{});
}

/// A posting function as the table binds it.
template <auto posting>
std::int32_t bound(PostingFrame& frame, std::span<const Argument> arguments) {
    return call(posting, frame, arguments);
}

constexpr Parameter line(const char16_t* name, LineType type) { return {name, ParameterType::line, type}; }
constexpr Parameter text(const char16_t* name) { return {name, ParameterType::text}; }
constexpr Parameter long_integer(const char16_t* name) { return {name, ParameterType::long_integer}; }
constexpr Parameter optional_text(const char16_t* name) { return {name, ParameterType::text, LineType::none, true}; }
constexpr Parameter optional_integer(const char16_t* name, std::int16_t value) {
    return {name, ParameterType::integer, LineType::none, true, value};
}
constexpr Parameter optional_boolean(const char16_t* name, VariantBool value) {
    return {name, ParameterType::boolean, LineType::none, true, static_cast<std::int16_t>(value)};
}

constexpr auto property_get = MemberKind::property_get;
constexpr auto property_let = MemberKind::property_let;
constexpr auto property_set = MemberKind::property_set;
constexpr auto method = MemberKind::method;
constexpr auto tell_user = OnError::tell_user;
constexpr auto stay_silent = OnError::stay_silent;

// clang-format off
constexpr Member members[] = {
    //number dispatch id name, kind, parameters, on error, posting
    {0, 0x68030001, u"DATAType", property_get},
    {1, 0x68030001, u"DATAType", property_let},
    {2, 0x68030000, u"ADOConn", property_get},
    {3, 0x68030000, u"ADOConn", property_set},
    {4, 0x60030002, u"AddInventory_Db", method, {line(u"objBillItems", LineType::StockBillItemObject)}, tell_user, bound<posting::AddInventory_Db>},
    {5, 0x60030003, u"ReduceInventory_Db", method, {text(u"cId")}, tell_user, bound<posting::ReduceInventory_Db>},
    {6, 0x60030004, u"In_AddInventory", method, {line(u"objBillItems", LineType::StockBillItemObject), optional_integer(u"iCPZT", 0)}, tell_user, bound<posting::In_AddInventory>},
    {7, 0x60030005, u"In_ReduceInventory", method, {text(u"cId"), optional_text(u"sZLID"), optional_integer(u"iZYCP", -1), optional_integer(u"iCPZT", 0)}, tell_user, bound<posting::In_ReduceInventory>},
    {8, 0x60030006, u"Out_AddInventory", method, {text(u"cId"), optional_boolean(u"bUseAbs", VariantBool::exactly_false), optional_integer(u"iCPZT", 0)}, tell_user, bound<posting::Out_AddInventory>},
    {9, 0x60030007, u"Out_ReduceInventory", method, {line(u"objBillItems", LineType::StockBillItemObject), optional_boolean(u"bUseAbs", VariantBool::exactly_false), optional_integer(u"iCPZT", 0)}, tell_user, bound<posting::Out_ReduceInventory>},
    {10, 0x60030008, u"Loss_ReduceInventory", method, {line(u"objBillItems", LineType::LossOverItemObject), optional_integer(u"iGoodsStatus", 0)}, tell_user, bound<posting::Loss_ReduceInventory>},
    {11, 0x60030009, u"Loss_AddInventory", method, {text(u"cId")}, tell_user, bound<posting::Loss_AddInventory>},
    {12, 0x6003000A, u"Over_AddInventory", method, {line(u"objBillItems", LineType::LossOverItemObject), optional_integer(u"iGoodsStatus", 0)}, tell_user, bound<posting::Over_AddInventory>},
    {13, 0x6003000B, u"Over_ReduceInventory", method, {text(u"cId")}, tell_user, bound<posting::Over_ReduceInventory>},
    {14, 0x6003000C, u"RG_AddInventory_Db", method, {line(u"objBillItems", LineType::RGStockItemObject), text(u"Receiver"), text(u"Supplier")}, tell_user, bound<posting::RG_AddInventory_Db>},
    {15, 0x6003000D, u"RG_ReduceInventory_Db", method, {text(u"cId")}, tell_user, bound<posting::RG_ReduceInventory_Db>},
    {16, 0x6003000E, u"RG_In_AddInventory", method, {line(u"rgsStockItemObj", LineType::RGStockItemObject)}, tell_user, bound<posting::RG_In_AddInventory>},
    {17, 0x6003000F, u"RG_In_AddInventoryStatus", method, {line(u"rgsStockItemObj", LineType::RGStockItemObject)}, tell_user, bound<posting::RG_In_AddInventoryStatus>},
    {18, 0x60030010, u"RG_In_ReduceInventory", method, {line(u"rgsStockItemObj", LineType::RGStockItemObject)}, tell_user, bound<posting::RG_In_ReduceInventory>},
    {19, 0x60030011, u"RG_In_ReduceInventoryStatus", method, {line(u"rgsStockItemObj", LineType::RGStockItemObject)}, tell_user, bound<posting::RG_In_ReduceInventoryStatus>},
    {20, 0x60030012, u"RG_Out_AddInventory", method, {line(u"rgsStockItemObj", LineType::RGStockItemObject)}, tell_user, bound<posting::RG_Out_AddInventory>},
    {21, 0x60030013, u"RG_Out_ReduceInventory", method, {line(u"rgsStockItemObj", LineType::RGStockItemObject)}, tell_user, bound<posting::RG_Out_ReduceInventory>},
    {22, 0x60030014, u"Hj_AddInventory_Db", method, {line(u"objBillItems", LineType::RGStockItemObject), text(u"Receiver"), text(u"Supplier")}, tell_user, bound<posting::Hj_AddInventory_Db>},
    {23, 0x60030015, u"Hj_ReduceInventory_Db", method, {text(u"cId")}, tell_user, bound<posting::Hj_ReduceInventory_Db>},
    {24, 0x60030016, u"XFP_In_ReduceInventory", method, {line(u"rgsStockItemObj", LineType::RGStockItemObject)}, tell_user, bound<posting::XFP_In_ReduceInventory>},
    {25, 0x60030017, u"XFP_In_AddInventory", method, {line(u"rgsStockItemObj", LineType::RGStockItemObject)}, tell_user, bound<posting::XFP_In_AddInventory>},
    {26, 0x60030018, u"XFP_Out_ReduceInventory", method, {line(u"rgsStockItemObj", LineType::RGStockItemObject)}, tell_user, bound<posting::XFP_Out_ReduceInventory>},
    {27, 0x60030019, u"XFP_Out_AddInventory", method, {line(u"rgsStockItemObj", LineType::RGStockItemObject)}, tell_user, bound<posting::XFP_Out_AddInventory>},
    {28, 0x6003001A, u"GoodsConvert_AddItems_ChangeInventory", method, {line(u"objBillItem", LineType::StockBillItemObject), long_integer(u"enumConvertType")}, tell_user, bound<posting::GoodsConvert_AddItems_ChangeInventory>},
    {29, 0x6003001B, u"GoodsConvert_DelItems_ChangeInventory", method, {text(u"cBillid")}, tell_user, bound<posting::GoodsConvert_DelItems_ChangeInventory>},
    {30, 0x6003001C, u"SaleIn_AddInventory", method, {line(u"objBillItems", LineType::StockBillItemObject)}, tell_user, bound<posting::SaleIn_AddInventory>},
    {31, 0x6003001D, u"SaleIn_ReduceInventory", method, {text(u"cId")}, tell_user, bound<posting::SaleIn_ReduceInventory>},
    {32, 0x6003001E, u"BorrowOut_AddInventory", method, {line(u"objBillItems", LineType::BorrowItemObject)}, tell_user, bound<posting::BorrowOut_AddInventory>},
    {33, 0x6003001F, u"BorrowOut_ReduceInventory", method, {text(u"cId")}, tell_user, bound<posting::BorrowOut_ReduceInventory>},
    {34, 0x60030020, u"BorrowIn_AddInventory", method, {line(u"objBillItems", LineType::BorrowItemObject)}, tell_user, bound<posting::BorrowIn_AddInventory>},
    {35, 0x60030021, u"BorrowIn_ReduceInventory", method, {text(u"cId")}, tell_user, bound<posting::BorrowIn_ReduceInventory>},
    {36, 0x60030022, u"AddInventory_ZZD_ZJ", method, {text(u"cId")}, stay_silent, bound<posting::AddInventory_ZZD_ZJ>},
    {37, 0x60030023, u"AddInventory_ZZD_MJ", method, {text(u"cId")}, stay_silent, bound<posting::AddInventory_ZZD_MJ>},
    {38, 0x60030024, u"ReduceInventory_ZZD_ZJ", method, {text(u"cId")}, stay_silent, bound<posting::ReduceInventory_ZZD_ZJ>},
    {39, 0x60030025, u"ReduceInventory_ZZD_MJ", method, {text(u"cId")}, stay_silent, bound<posting::ReduceInventory_ZZD_MJ>},
    {40, 0x60030026, u"AddInventory_CXD_ZJ", method, {text(u"cId")}, stay_silent, bound<posting::AddInventory_CXD_ZJ>},
    {41, 0x60030027, u"AddInventory_CXD_MJ", method, {text(u"cId")}, stay_silent, bound<posting::AddInventory_CXD_MJ>},
    {42, 0x60030028, u"ReduceInventory_CXD_ZJ", method, {text(u"cId")}, stay_silent, bound<posting::ReduceInventory_CXD_ZJ>},
    {43, 0x60030029, u"ReduceInventory_CXD_MJ", method, {text(u"cId")}, stay_silent, bound<posting::ReduceInventory_CXD_MJ>},
};
// clang-format on

constexpr bool in_interface_order() {
    int number = 0;
    for (const Member& member : members) {
        if (member.number != number++) return false;
    }
    return true;
}
static_assert(in_interface_order());

}  // namespace

Variant Parameter::default_value() const {
    if (type == ParameterType::text) return Text();
    return default_number;
}

std::span<const Parameter> Member::parameters() const {
    const auto unused = std::ranges::find(parameter_slots, ParameterType::none, &Parameter::type);
    return {parameter_slots.begin(), unused};
}

std::span<const Member> member_table() { return members; }

const Member* find_method(TextView name) {
    for (const Member& member : members) {
        if (member.kind == MemberKind::method && equal_ignoring_case(member.name, name)) return &member;
    }
    return nullptr;
}

}  // namespace vantlo
