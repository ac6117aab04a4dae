#include "ado/com/automation_value.h"

#include <bit>
#include <cstddef>

#include "ado/com/hresult.h"

namespace vantlo {

namespace {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

static_assert(sizeof(DispatchValue) == sizeof(VARIANT) && alignof(DispatchValue) == alignof(VARIANT));
static_assert(offsetof(DispatchValue, type) == offsetof(VARIANT, vt));
static_assert(offsetof(DispatchValue, content) == offsetof(VARIANT, byref));
constexpr bool has_number(DispatchType type, int number) { return static_cast<int>(type) == number; }
static_assert(has_number(DispatchType::text, VT_BSTR) && has_number(DispatchType::variant, VT_VARIANT) &&
              has_number(DispatchType::decimal, VT_DECIMAL) && has_number(DispatchType::machine_uint, VT_UINT) &&
              has_number(DispatchType::array_flag, VT_ARRAY) && has_number(DispatchType::reference_flag, VT_BYREF));

/// The system's headers want a value that is only read to be writable.
VARIANT* source(const VARIANT& value) { return const_cast<VARIANT*>(&value); }

Text number_text_of(const VARIANT& value) {
    AutomationValue text;
    check(text.convert(value, VT_BSTR), "a number as text");
    return text_of(text.get().bstrVal);
}

Variant plain_variant_of(const VARIANT& value) {
    switch (value.vt) {
        case VT_EMPTY: return {};
        case VT_NULL: return Null{};
        case VT_UI1: return std::uint8_t{value.bVal};
        case VT_I2: return std::int16_t{value.iVal};
        case VT_I4:
        case VT_INT: return std::int32_t{value.lVal};
        case VT_R4: return value.fltVal;
        case VT_R8: return value.dblVal;
        case VT_CY: return Currency::from_ten_thousandths(value.cyVal.int64);
        case VT_DATE: return Date{value.date};
        case VT_BOOL: return value.boolVal != VARIANT_FALSE;
        case VT_BSTR: return text_of(value.bstrVal);
        case VT_DECIMAL:
        case VT_I1:
        case VT_UI2:
        case VT_UI4:
        case VT_UINT:
        case VT_I8:
        case VT_UI8: return Other{number_text_of(value)};
        default: return Other{};
    }
}

}  // namespace

HRESULT AutomationValue::convert(const VARIANT& value, VARTYPE type) {
    constexpr LCID english = 0x0409;
    return VariantChangeTypeEx(&value_, source(value), english, VARIANT_NOUSEROVERRIDE, type);
}

VARIANT AutomationValue::missing() {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_ERROR;
    value.scode = DISP_E_PARAMNOTFOUND;
    return value;
}

AutomationString::AutomationString(TextView text)
    : text_(SysAllocStringLen(reinterpret_cast<const OLECHAR*>(text.data()), static_cast<UINT>(text.size()))) {
    if (text_ == nullptr) throw Failure(error::out_of_memory);
}

Text text_of(BSTR text) { return {reinterpret_cast<const char16_t*>(text), SysStringLen(text)}; }

DispatchValue dispatch_value_of(const VARIANT& value) { return std::bit_cast<DispatchValue>(value); }

VARIANT system_value_of(const DispatchValue& value) { return std::bit_cast<VARIANT>(value); }

Variant variant_of(const VARIANT& value) {
    const FollowedValue followed = follow_references(dispatch_value_of(value));
    if (followed.reach != Reach::value) throw Failure(error::type_mismatch, "a reference that leads nowhere");
    return plain_variant_of(system_value_of(followed.value));
}

}  // namespace vantlo
