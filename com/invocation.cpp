#include "com/invocation.h"

#include <deque>

#include "ado/com/com_connection.h"
#include "ado/com/hresult.h"
#include "com/inventory_object.h"

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

/// A call that COM's rules forbid.
struct Misuse {
    HRESULT result;
    UINT argument = 0;
};

void require(HRESULT result, UINT argument) {
    if (FAILED(result)) throw Misuse{result, argument};
}

/// Where a parameter's argument stands: arguments come in reverse, named ones first.
const UINT no_argument = ~0U;

UINT place_of(const DISPPARAMS& parameters, UINT parameter) {
    for (UINT i = 0; i < parameters.cNamedArgs; ++i) {
        if (parameters.rgdispidNamedArgs[i] == static_cast<DISPID>(parameter)) return i;
    }
    const UINT positional = parameters.cArgs - parameters.cNamedArgs;
    return parameter < positional ? parameters.cArgs - 1 - parameter : no_argument;
}

/// The value itself, behind any number of references to variants.
const VARIANT& value_behind(const VARIANT& value) {
    const VARIANT* found = &value;
    while (found->vt == (VT_BYREF | VT_VARIANT) && found->pvarVal != nullptr) found = found->pvarVal;
    return *found;
}

bool is_left_out(const VARIANT& value) { return value.vt == VT_ERROR && value.scode == DISP_E_PARAMNOTFOUND; }

/// The object in a value that may hold none. Errors: DISP_E_TYPEMISMATCH for a value that is no object at all.
InterfacePointer<IDispatch> object_in(const VARIANT& value, UINT argument) {
    IUnknown* object = nullptr;
    switch (value.vt) {
        case VT_DISPATCH: object = value.pdispVal; break;
        case VT_UNKNOWN: object = value.punkVal; break;
        case VT_BYREF | VT_DISPATCH: object = *value.ppdispVal; break;
        case VT_BYREF | VT_UNKNOWN: object = *value.ppunkVal; break;
        default: throw Misuse{DISP_E_TYPEMISMATCH, argument};
    }
    InterfacePointer<IDispatch> dispatch;
    if (object != nullptr) require(object->QueryInterface(IID_IDispatch, dispatch.receive_any()), argument);
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

/// A value converted to a parameter's type by automation's rules. A Boolean keeps its 16 bits: only -1 is exactly True.
Variant converted(const VARIANT& value, ParameterType type, UINT argument) {
    AutomationValue plain;
    require(plain.copy(value), argument);
    if (plain.get().vt == VT_NULL) throw Misuse{DISP_E_TYPEMISMATCH, argument};
    AutomationValue typed;
    require(typed.convert(plain.get(), automation_type(type)), argument);
    if (type == ParameterType::boolean) return std::int16_t{typed.get().boolVal};
    return variant_of(typed.get());
}

/// A method's arguments out of a call's parameters.
class Arguments {
public:
    Arguments(const Member& member, const DISPPARAMS& parameters) {
        const std::span<const Parameter> expected = member.parameters();
        if (parameters.cArgs > expected.size()) throw Misuse{DISP_E_BADPARAMCOUNT};
        for (UINT i = 0; i < parameters.cNamedArgs; ++i) {
            const DISPID named = parameters.rgdispidNamedArgs[i];
            if (named < 0 || static_cast<std::size_t>(named) >= expected.size()) throw Misuse{DISP_E_PARAMNOTFOUND, i};
        }
        for (UINT i = 0; i < expected.size(); ++i) take(expected[i], parameters, place_of(parameters, i));
    }

    [[nodiscard]] std::span<const Argument> values() const { return values_; }

private:
    void take(const Parameter& parameter, const DISPPARAMS& parameters, UINT place) {
        if (place == no_argument && !parameter.optional) throw Misuse{DISP_E_BADPARAMCOUNT};
        if (place == no_argument) {
            values_.emplace_back(parameter.default_value());
            return;
        }
        const VARIANT& value = value_behind(parameters.rgvarg[place]);
        if (is_left_out(value)) {
            if (!parameter.optional) throw Misuse{DISP_E_PARAMNOTOPTIONAL, place};
            values_.emplace_back(parameter.default_value());
        } else if (parameter.type == ParameterType::line) {
            values_.emplace_back(lines_.emplace_back(object_in(value, place).get()));
        } else {
            values_.emplace_back(converted(value, parameter.type, place));
        }
    }

    std::deque<AutomationLine> lines_;
    std::vector<Argument> values_;
};

/// The one value of a property assignment.
const VARIANT& assigned_value(const DISPPARAMS& parameters) {
    if (parameters.cArgs != 1) throw Misuse{DISP_E_BADPARAMCOUNT};
    return value_behind(parameters.rgvarg[0]);
}

HRESULT put_property(InventoryObject& object, const Member& member, const DISPPARAMS& parameters) {
    const VARIANT& value = assigned_value(parameters);
    if (TextView(member.name) == u"DATAType") {
        const AutomationString text(to_text(converted(value, ParameterType::text, 0)));
        return object.put_DATAType(text.get());
    }
    const bool is_nothing = value.vt == VT_EMPTY || value.vt == VT_NULL;  // JScript knows no other nothing than null
    const InterfacePointer<IDispatch> connection = is_nothing ? InterfacePointer<IDispatch>() : object_in(value, 0);
    const HRESULT result = object.putref_ADOConn(reinterpret_cast<_Connection*>(connection.get()));
    require(result, 0);
    return result;
}

HRESULT get_property(InventoryObject& object, const Member& member, const DISPPARAMS& parameters, VARIANT* result) {
    if (parameters.cArgs != 0) throw Misuse{DISP_E_BADPARAMCOUNT};
    if (result == nullptr) return S_OK;
    VariantInit(result);
    if (TextView(member.name) == u"DATAType") {
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
    const auto text = [&](std::size_t i) { return TextView(reinterpret_cast<const char16_t*>(names[i])); };
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
        if (wrong_argument != nullptr) *wrong_argument = misuse.argument;
        return misuse.result;
    }
}

}  // namespace vantlo
