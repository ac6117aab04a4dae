#pragma once

#include <ole2.h>

#include "automation/dispatch_value.h"
#include "automation/variant.h"

namespace vantlo {

/// A VARIANT that is cleared at its end.
class AutomationValue {
public:
    AutomationValue() { VariantInit(&value_); }
    AutomationValue(const AutomationValue&) = delete;
    AutomationValue& operator=(const AutomationValue&) = delete;
    ~AutomationValue() { VariantClear(&value_); }

    [[nodiscard]] const VARIANT& get() const { return value_; }
    VARIANT* receive() {
        VariantClear(&value_);
        return &value_;
    }

    /// Receives what `call(VARIANT*)` hands over. What a call that fails leaves there is nothing that could be freed.
    template <typename Call>
    [[nodiscard]] HRESULT receive_from(const Call& call) {
        const HRESULT result = call(receive());
        if (FAILED(result)) VariantInit(&value_);
        return result;
    }

    /// Takes another value in a type by automation's rules; numbers in texts have a point, whatever the locale.
    [[nodiscard]] HRESULT convert(const VARIANT& value, VARTYPE type);

    /// A value as an optional argument that was left out carries it.
    static VARIANT missing();

private:
    VARIANT value_;
};

/// A value in the form that code for every platform reads, and back. Its bytes alone are copied: what it points to stays
/// with its owner.
DispatchValue dispatch_value_of(const VARIANT& value);
VARIANT system_value_of(const DispatchValue& value);

/// A BSTR that is freed at its end.
class AutomationString {
public:
    /// Errors   out_of_memory.
    explicit AutomationString(TextView text);
    AutomationString(const AutomationString&) = delete;
    AutomationString& operator=(const AutomationString&) = delete;
    ~AutomationString() { SysFreeString(text_); }

    [[nodiscard]] BSTR get() const { return text_; }

private:
    BSTR text_;
};

/// The text of a BSTR; a null one is the empty text.
Text text_of(BSTR text);

/// A host's value as one of the closed set; what lies outside it becomes an Other, decimals and wide integers with their
/// number's text. References are followed.
/// Errors   out_of_memory; type_mismatch for a reference that leads nowhere.
Variant variant_of(const VARIANT& value);

}  // namespace vantlo
