#pragma once

#include <algorithm>
#include <vector>

#include "posting/line.h"
#include "tests/support/com/automation_object.h"

namespace vantlo::test {

/// A line as a host's automation object: every property that it is asked for is asked of the line behind it.
class LineObject final : public AutomationObject<LineObject, IDispatch> {
public:
    explicit LineObject(Line& line) : line_(line) {}

    static std::span<const IID> identifiers() { return {}; }
    static std::span<const ScriptMember<LineObject>> script_members() { return {}; }

    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
        const Text name(reinterpret_cast<const char16_t*>(names[0]));
        const auto known = std::ranges::find(names_, name);
        ids[0] = static_cast<DISPID>(known - names_.begin());
        if (known == names_.end()) names_.push_back(name);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO* exception,
                                     UINT*) override {
        const HRESULT outcome =
            trapped([&] { *result = OwnedVariant(line_.value(names_.at(static_cast<std::size_t>(id)))).detach(); });
        if (SUCCEEDED(outcome) || exception == nullptr) return outcome;
        *exception = EXCEPINFO();
        exception->scode = outcome;
        return DISP_E_EXCEPTION;
    }

private:
    ~LineObject() override = default;

    Line& line_;
    std::vector<Text> names_;
};

/// The count of an object's references, as the object itself tells.
inline ULONG references(IUnknown& object) {
    object.AddRef();
    return object.Release();
}

}  // namespace vantlo::test
