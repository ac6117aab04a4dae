#pragma once

#include <deque>

#include "tests/support/com/automation_object.h"

namespace vantlo::test {

/// An object that keeps whatever properties a script gives it: a host's own line object, in a compiled language.
class PropertyBag final : public AutomationObject<PropertyBag, IDispatch> {
public:
    static std::span<const IID> identifiers() { return {}; }
    static std::span<const ScriptMember<PropertyBag>> script_members() { return {}; }

    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
        const auto* const name = reinterpret_cast<const char16_t*>(names[0]);
        const auto known = std::ranges::find_if(
            properties_, [&](const Property& property) { return equal_ignoring_case(property.name, name); });
        ids[0] = static_cast<DISPID>(known - properties_.begin());
        if (known == properties_.end()) properties_.push_back({name, {}});
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                                     EXCEPINFO*, UINT*) override {
        VARIANT& value = *properties_.at(static_cast<std::size_t>(id)).value;
        const bool is_put = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
        return is_put ? VariantCopyInd(&value, &parameters->rgvarg[0]) : VariantCopy(result, &value);
    }

private:
    struct Property {
        Text name;
        OwnedVariant value;
    };

    ~PropertyBag() override = default;

    std::deque<Property> properties_;
};

}  // namespace vantlo::test
