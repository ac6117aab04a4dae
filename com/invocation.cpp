#include "com/invocation.h"

#include <deque>

#include "ado/com/com_connection.h"
#include "ado/com/hresult.h"
#include "com/inventory_object.h"
#include "component/passed_arguments.h"

namespace vantlo {

namespace {

const Member* member_with(DISPID identifier) {
    for (const Member& member : member_table()) {
        if (static_cast<DISPID>(member.dispatch_id) == identifier) return &member;
    }
    return nullptr;
}

const Member* member_named(TextView name) {
    for (const Member& member : member_table()) {
        if (equal_ignoring_case(member.name, name)) return &member;
    }
    return nullptr;
}

void require(HRESULT result, std::uint32_t place) {
    if (FAILED(result)) throw Misuse{error_number(result), place};
}

static_assert(sizeof(DISPID) == sizeof(std::int32_t));

PassedArguments passed_arguments(const DISPPARAMS& parameters) {
    return {reinterpret_cast<const DispatchValue*>(parameters.rgvarg),
            reinterpret_cast<const std::int32_t*>(parameters.rgdispidNamedArgs), parameters.cArgs,
            parameters.cNamedArgs};
}

/// The object in a value that may hold none. Errors: Misuse for a value that is no object at all.
InterfacePointer<IDispatch> object_in(const DispatchValue& value, std::uint32_t place) {
    if (!is_object(value.type)) throw Misuse{error::type_mismatch, place};
    auto* const object = value.read<IUnknown*>();
    InterfacePointer<IDispatch> dispatch;
    if (object == nullptr) return dispatch;
    require(object->QueryInterface(IID_IDispatch, dispatch.receive_any()), place);
    if (!dispatch) throw Misuse{error::no_such_interface, place};
    return dispatch;
}

VARTYPE automation_type(ParameterType type) {
    switch (type) {
        case ParameterType::text: return VT_BSTR;
        case ParameterType::boolean: return VT_BOOL;
        case ParameterType::integer: return VT_I2;
        default: return VT_I4;
    }
}

/// How many objects a value may stand behind, each the default property of the one before it.
constexpr int most_objects = 4;

/// A value converted to a parameter's type by automation's rules; an object stands for its default property. A Boolean
/// keeps its 16 bits: only -1 is exactly True.
Variant converted(const DispatchValue& value, const Parameter& parameter, std::uint32_t place,
                  int objects_left = most_objects) {
    if (is_object(value.type)) {
        if (objects_left == 0) throw Misuse{error::type_mismatch, place};
        DISPPARAMS none{};
        AutomationValue property;
        const InterfacePointer<IDispatch> object = object_in(value, place);
        const HRESULT result = property.receive_from([&](VARIANT* received) {
            return object->Invoke(DISPID_VALUE, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_PROPERTYGET, &none, received,
                                  nullptr, nullptr);
        });
        if (FAILED(result)) throw Misuse{error::type_mismatch, place};
        return converted(value_for(parameter, dispatch_value_of(property.get()), place), parameter, place,
                         objects_left - 1);
    }
    AutomationValue typed;
    require(typed.convert(system_value_of(value), automation_type(parameter.type)), place);
    if (parameter.type == ParameterType::boolean) return std::int16_t{typed.get().boolVal};
    return variant_of(typed.get());
}

/// A method's arguments out of a call's parameters.
class Arguments {
public:
    Arguments(const Member& member, const DISPPARAMS& parameters) {
        const std::vector<GivenArgument> given = arguments_for(member.parameters(), passed_arguments(parameters));
        for (std::size_t i = 0; i < given.size(); ++i) take(member.parameters()[i], given[i]);
    }

    [[nodiscard]] std::span<const Argument> values() const { return values_; }

private:
    void take(const Parameter& parameter, const GivenArgument& given) {
        if (given.is_left_out) {
            values_.emplace_back(parameter.default_value());
        } else if (parameter.type == ParameterType::line) {
            const InterfacePointer<IDispatch> object = object_in(given.value, given.place);
            values_.emplace_back(lines_.emplace_back(object.get(), parameter.line_type));
        } else {
            values_.emplace_back(converted(given.value, parameter, given.place));
        }
    }

    std::deque<AutomationLine> lines_;
    std::vector<Argument> values_;
};

constexpr Parameter text_property = {u"DATAType", ParameterType::text};

HRESULT put_property(InventoryObject& object, const Member& member, const DISPPARAMS& parameters) {
    const DispatchValue value = assigned_value(passed_arguments(parameters));
    if (TextView(member.name) == text_property.name) {
        const AutomationString text(to_text(converted(value_for(text_property, value, 0), text_property, 0)));
        return object.put_DATAType(text.get());
    }
    // JScript knows no other nothing than null.
    const bool is_nothing = value.type == DispatchType::empty || value.type == DispatchType::null;
    const InterfacePointer<IDispatch> connection = is_nothing ? InterfacePointer<IDispatch>() : object_in(value, 0);
    const HRESULT result = object.putref_ADOConn(reinterpret_cast<_Connection*>(connection.get()));
    require(result, 0);
    return result;
}

HRESULT get_property(InventoryObject& object, const Member& member, const DISPPARAMS& parameters, VARIANT* result) {
    if (parameters.cArgs != 0) throw Misuse{DISP_E_BADPARAMCOUNT};
    if (result == nullptr) return S_OK;
    VariantInit(result);
    if (TextView(member.name) == text_property.name) {
        const HRESULT got = object.get_DATAType(&result->bstrVal);
        if (SUCCEEDED(got)) result->vt = VT_BSTR;
        return got;
    }
    _Connection* connection = nullptr;
    const HRESULT got = object.get_ADOConn(&connection);
    if (FAILED(got)) return got;
    result->vt = VT_DISPATCH;
    result->pdispVal = reinterpret_cast<IDispatch*>(connection);
    return got;
}

HRESULT call_method(InventoryObject& object, const Member& member, const DISPPARAMS& parameters, VARIANT* result) {
    const Arguments arguments(member, parameters);
    const LONG number = object.call(member, arguments.values());
    if (result != nullptr) {
        VariantInit(result);
        result->vt = VT_I4;
        result->lVal = number;
    }
    return S_OK;
}

}  // namespace

HRESULT dispatch_identifiers(std::span<LPOLESTR> names, DISPID* identifiers) {
    if (names.empty()) return E_INVALIDARG;
    HRESULT result = S_OK;
    // A null name is as unknown as an empty one.
    const auto text = [&](std::size_t i) {
        return names[i] != nullptr ? TextView(reinterpret_cast<const char16_t*>(names[i])) : TextView();
    };
    const Member* const member = member_named(text(0));
    for (std::size_t i = 0; i < names.size(); ++i) identifiers[i] = DISPID_UNKNOWN;
    if (member == nullptr) return DISP_E_UNKNOWNNAME;
    identifiers[0] = static_cast<DISPID>(member->dispatch_id);
    for (std::size_t i = 1; i < names.size(); ++i) {
        const std::span<const Parameter> parameters = member->parameters();
        for (std::size_t p = 0; p < parameters.size(); ++p) {
            if (equal_ignoring_case(parameters[p].name, text(i))) identifiers[i] = static_cast<DISPID>(p);
        }
        if (identifiers[i] == DISPID_UNKNOWN) result = DISP_E_UNKNOWNNAME;
    }
    return result;
}

HRESULT Invocation::run(DISPID identifier) {
    const Member* const member = member_with(identifier);
    if (member == nullptr) return DISP_E_MEMBERNOTFOUND;
    try {
        const bool is_method = member->kind == MemberKind::method;
        if (is_method && (flags & DISPATCH_METHOD) != 0) return call_method(object, *member, parameters, result);
        if (is_method) return DISP_E_MEMBERNOTFOUND;
        // Script engines assign objects either way.
        if ((flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0)
            return put_property(object, *member, parameters);
        if ((flags & DISPATCH_PROPERTYGET) != 0) return get_property(object, *member, parameters, result);
        return DISP_E_MEMBERNOTFOUND;
    } catch (const Misuse& misuse) {
        if (wrong_argument != nullptr) *wrong_argument = misuse.place;
        return dispatch_result(misuse.number);
    }
}

}  // namespace vantlo
