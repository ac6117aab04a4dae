#include "tests/support/com/automation_object.h"

#include <variant>

namespace vantlo::test {

namespace {

/// Puts one core value into a VARIANT as its automation type.
struct Filler {
    VARIANT& target;

    void operator()(Empty) const { target.vt = VT_EMPTY; }
    void operator()(Null) const { target.vt = VT_NULL; }
    void operator()(std::uint8_t value) const { target.vt = VT_UI1, target.bVal = value; }
    void operator()(std::int16_t value) const { target.vt = VT_I2, target.iVal = value; }
    void operator()(std::int32_t value) const { target.vt = VT_I4, target.lVal = value; }
    void operator()(float value) const { target.vt = VT_R4, target.fltVal = value; }
    void operator()(double value) const { target.vt = VT_R8, target.dblVal = value; }
    void operator()(Currency value) const { target.vt = VT_CY, target.cyVal.int64 = value.ten_thousandths(); }
    void operator()(Date value) const { target.vt = VT_DATE, target.date = value.days; }
    void operator()(bool value) const { target.vt = VT_BOOL, target.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE; }
    void operator()(const Text& value) const { target.bstrVal = new_bstr(value), target.vt = VT_BSTR; }
    void operator()(const Other& value) const {
        // A number of another type comes as a Decimal, everything else as a value that no conversion takes.
        const OwnedBstr text(value.number);
        const bool is_number =
            !value.number.empty() && SUCCEEDED(VarDecFromStr(text.get(), LOCALE_INVARIANT, 0, &target.decVal));
        target.vt = is_number ? VT_DECIMAL : VT_ERROR;
    }
};

}  // namespace

OwnedVariant::OwnedVariant(const Variant& value) : OwnedVariant() { std::visit(Filler{value_}, value.value()); }

OwnedVariant::OwnedVariant(IDispatch* object) : OwnedVariant() {
    value_.vt = VT_DISPATCH;
    value_.pdispVal = object;
    if (object != nullptr) object->AddRef();
}

VARIANT missing_argument() {
    VARIANT argument;
    argument.vt = VT_ERROR;
    argument.scode = DISP_E_PARAMNOTFOUND;
    return argument;
}

bool is_missing(const VARIANT& argument) { return argument.vt == VT_ERROR && argument.scode == DISP_E_PARAMNOTFOUND; }

BSTR new_bstr(TextView text) {
    static_assert(sizeof(OLECHAR) == sizeof(char16_t));
    BSTR made = SysAllocStringLen(reinterpret_cast<const OLECHAR*>(text.data()), static_cast<UINT>(text.size()));
    if (made == nullptr) throw std::bad_alloc();
    return made;
}

Text text_of(BSTR text) { return {reinterpret_cast<const char16_t*>(text), SysStringLen(text)}; }

HRESULT hresult_of(ErrorNumber number) {
    constexpr ErrorNumber last_own_number = 0xFFFF;  // below it automation's and ADO's own numbers, above HRESULTs
    if (number < 0 || number > last_own_number) return number;
    return MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, number);
}

CallArguments::CallArguments(const DISPPARAMS& parameters) : values_(parameters.cArgs) {
    for (UINT i = 0; i < parameters.cArgs; ++i) {  // they come last first
        const HRESULT copied = VariantCopyInd(values_[i].get(), &parameters.rgvarg[parameters.cArgs - 1 - i]);
        if (FAILED(copied)) throw Failure(error::type_mismatch);
    }
}

Text CallArguments::text(std::size_t position) const {
    if (position >= size()) throw Failure(error::wrong_argument_count);
    OwnedVariant converted;
    // The source is only read, but declared without const.
    VARIANT& source = const_cast<VARIANT&>(*values_[position]);
    if (FAILED(VariantChangeType(converted.get(), &source, 0, VT_BSTR))) {
        throw Failure(error::type_mismatch);
    }
    return text_of(converted->bstrVal);
}

}  // namespace vantlo::test
