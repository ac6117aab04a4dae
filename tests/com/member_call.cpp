#include "tests/com/member_call.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <tuple>

namespace vantlo::test {

namespace {

/// An argument in the type of an early-bound parameter.
template <typename Type>
struct Held {
    explicit Held(const ComArgument& argument) : value(reinterpret_cast<Type>(argument.line)) {}
    Type* pointer() { return &value; }
    Type value;  // the interface of a line object, which the component takes for any automation object
};
template <>
struct Held<BSTR> {
    explicit Held(const ComArgument& argument) : value(to_text(argument.value)) {}
    BSTR* pointer() { return value.out(); }
    OwnedBstr value;
};
template <>
struct Held<short> {
    explicit Held(const ComArgument& argument) : value(to_integer(argument.value)) {}
    short* pointer() { return &value; }
    short value;
};
template <>
struct Held<LONG> {
    explicit Held(const ComArgument& argument) : value(to_long(argument.value)) {}
    LONG* pointer() { return &value; }
    LONG value;
};

using EarlyBoundCall = HRESULT (*)(_Inventory_Class& object, const std::vector<ComArgument>& arguments, LONG& result);

template <typename Method>
struct Signature;
template <typename... Pointers>
struct Signature<HRESULT (STDMETHODCALLTYPE _Inventory_Class::*)(Pointers...)> {
    using Parameters = std::tuple<std::remove_pointer_t<Pointers>...>;
    static constexpr std::size_t count = sizeof...(Pointers) - 1;  // the last is the result
};

template <auto method>
HRESULT early_bound(_Inventory_Class& object, const std::vector<ComArgument>& arguments, LONG& result) {
    using Form = Signature<decltype(method)>;
    return [&]<std::size_t... i>(std::index_sequence<i...>) {
        std::tuple<Held<std::tuple_element_t<i, typename Form::Parameters>>...> held(arguments.at(i)...);
        return (object.*method)(std::get<i>(held).pointer()..., &result);
    }
    (std::make_index_sequence<Form::count>());
}

#define EARLY_BOUND(name) \
    { u## #name, early_bound<&_Inventory_Class::name> }

// clang-format off
const std::map<TextView, EarlyBoundCall> early_bound_calls = {
    EARLY_BOUND(AddInventory_Db),          EARLY_BOUND(ReduceInventory_Db),
    EARLY_BOUND(In_AddInventory),          EARLY_BOUND(In_ReduceInventory),
    EARLY_BOUND(Out_AddInventory),         EARLY_BOUND(Out_ReduceInventory),
    EARLY_BOUND(Loss_ReduceInventory),     EARLY_BOUND(Loss_AddInventory),
    EARLY_BOUND(Over_AddInventory),        EARLY_BOUND(Over_ReduceInventory),
    EARLY_BOUND(RG_AddInventory_Db),       EARLY_BOUND(RG_ReduceInventory_Db),
    EARLY_BOUND(RG_In_AddInventory),       EARLY_BOUND(RG_In_AddInventoryStatus),
    EARLY_BOUND(RG_In_ReduceInventory),    EARLY_BOUND(RG_In_ReduceInventoryStatus),
    EARLY_BOUND(RG_Out_AddInventory),      EARLY_BOUND(RG_Out_ReduceInventory),
    EARLY_BOUND(Hj_AddInventory_Db),       EARLY_BOUND(Hj_ReduceInventory_Db),
    EARLY_BOUND(XFP_In_ReduceInventory),   EARLY_BOUND(XFP_In_AddInventory),
    EARLY_BOUND(XFP_Out_ReduceInventory),  EARLY_BOUND(XFP_Out_AddInventory),
    EARLY_BOUND(GoodsConvert_AddItems_ChangeInventory),
    EARLY_BOUND(GoodsConvert_DelItems_ChangeInventory),
    EARLY_BOUND(SaleIn_AddInventory),      EARLY_BOUND(SaleIn_ReduceInventory),
    EARLY_BOUND(BorrowOut_AddInventory),   EARLY_BOUND(BorrowOut_ReduceInventory),
    EARLY_BOUND(BorrowIn_AddInventory),    EARLY_BOUND(BorrowIn_ReduceInventory),
    EARLY_BOUND(AddInventory_ZZD_ZJ),      EARLY_BOUND(AddInventory_ZZD_MJ),
    EARLY_BOUND(ReduceInventory_ZZD_ZJ),   EARLY_BOUND(ReduceInventory_ZZD_MJ),
    EARLY_BOUND(AddInventory_CXD_ZJ),      EARLY_BOUND(AddInventory_CXD_MJ),
    EARLY_BOUND(ReduceInventory_CXD_ZJ),   EARLY_BOUND(ReduceInventory_CXD_MJ),
};
// clang-format on

#undef EARLY_BOUND

HRESULT call_early_bound(_Inventory_Class& object, const Member& member, std::vector<ComArgument> arguments,
                         LONG& result) {
    const std::span<const Parameter> parameters = member.parameters();
    while (arguments.size() < parameters.size()) {
        arguments.push_back({nullptr, parameters[arguments.size()].default_value()});
    }
    return early_bound_calls.at(member.name)(object, arguments, result);
}

/// An argument as a host's variable holds it. A Boolean keeps all of its 16 bits: hosts other than script engines do
/// pass 1 for True.
OwnedVariant variable_of(const Parameter& parameter, const ComArgument& argument) {
    if (parameter.type == ParameterType::line) return OwnedVariant(argument.line);
    if (parameter.type != ParameterType::boolean) return OwnedVariant(argument.value);
    OwnedVariant variable;
    variable->vt = VT_BOOL;
    variable->boolVal = to_integer(argument.value);
    return variable;
}

/// By name, as a script engine passes its variables: references to variants, in reverse.
HRESULT call_by_name(_Inventory_Class& object, const Member& member, const std::vector<ComArgument>& arguments,
                     LONG& result) {
    std::vector<OwnedVariant> variables;
    for (const ComArgument& argument : arguments) {
        variables.push_back(variable_of(member.parameters()[variables.size()], argument));
    }
    std::vector<VARIANT> passed(variables.size());
    for (std::size_t i = 0; i < variables.size(); ++i) {
        VARIANT& reference = passed[passed.size() - 1 - i];
        reference.vt = VT_BYREF | VT_VARIANT;
        reference.pvarVal = variables[i].get();
    }
    std::wstring name(TextView(member.name).begin(), TextView(member.name).end());
    LPOLESTR names = name.data();
    DISPID identifier = DISPID_UNKNOWN;
    HRESULT status = object.GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &identifier);
    if (FAILED(status)) return status;
    DISPPARAMS parameters = {passed.data(), nullptr, static_cast<UINT>(passed.size()), 0};
    OwnedVariant answer;
    status = object.Invoke(identifier, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                           &parameters, answer.get(), nullptr, nullptr);
    if (SUCCEEDED(status) && answer->vt != VT_I4) return E_UNEXPECTED;
    result = answer->lVal;
    return status;
}

}  // namespace

LONG call_method(Road road, _Inventory_Class& object, const Member& member, const std::vector<ComArgument>& arguments) {
    LONG result = -1;
    const HRESULT status = road == Road::early_bound ? call_early_bound(object, member, arguments, result)
                                                     : call_by_name(object, member, arguments, result);
    if (status != S_OK) throw std::runtime_error(to_utf8(member.name) + " is refused: " + std::to_string(status));
    return result;
}

}  // namespace vantlo::test
