#pragma once

#include <ole2.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <iterator>
#include <new>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "automation/error.h"
#include "automation/variant.h"

namespace vantlo::test {

/// A counted COM reference.
template <typename Interface>
class ComPointer {
public:
    ComPointer() = default;
    ComPointer(std::nullptr_t) {}
    explicit ComPointer(Interface* object) : object_(object) {
        if (object_ != nullptr) object_->AddRef();
    }
    ComPointer(const ComPointer& other) : ComPointer(other.object_) {}
    ComPointer(ComPointer&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    ComPointer& operator=(ComPointer other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~ComPointer() {
        if (object_ != nullptr) object_->Release();
    }

    [[nodiscard]] Interface* get() const { return object_; }
    Interface* operator->() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

    /// Where a function puts a reference that it has counted already.
    Interface** out() {
        *this = nullptr;
        return &object_;
    }
    void** out_untyped() { return reinterpret_cast<void**>(out()); }

    /// Gives the reference away, still counted.
    [[nodiscard]] Interface* detach() { return std::exchange(object_, nullptr); }

private:
    Interface* object_ = nullptr;
};

/// A VARIANT that frees what it holds.
class OwnedVariant {
public:
    OwnedVariant() { VariantInit(&value_); }
    explicit OwnedVariant(const Variant& value);
    explicit OwnedVariant(IDispatch* object);
    OwnedVariant(OwnedVariant&& other) noexcept : OwnedVariant() { std::swap(value_, other.value_); }
    OwnedVariant(const OwnedVariant&) = delete;
    OwnedVariant& operator=(OwnedVariant other) noexcept {
        std::swap(value_, other.value_);
        return *this;
    }
    ~OwnedVariant() { VariantClear(&value_); }

    VARIANT* operator->() { return &value_; }
    const VARIANT* operator->() const { return &value_; }
    VARIANT& operator*() { return value_; }
    const VARIANT& operator*() const { return value_; }
    VARIANT* get() { return &value_; }

    /// Gives the value away.
    [[nodiscard]] VARIANT detach() { return std::exchange(value_, VARIANT()); }

private:
    VARIANT value_;
};

/// An optional argument that is left out.
VARIANT missing_argument();
bool is_missing(const VARIANT& argument);

/// A new BSTR. Errors: std::bad_alloc.
BSTR new_bstr(TextView text);

/// A BSTR that is freed at the end.
class OwnedBstr {
public:
    explicit OwnedBstr(TextView text) : text_(new_bstr(text)) {}
    OwnedBstr(const OwnedBstr&) = delete;
    OwnedBstr& operator=(const OwnedBstr&) = delete;
    ~OwnedBstr() { SysFreeString(text_); }

    [[nodiscard]] BSTR get() const { return text_; }
    BSTR* out() { return &text_; }

private:
    BSTR text_;
};

/// The text of a BSTR; null is the empty text.
Text text_of(BSTR text);

/// The HRESULT under which an automation object reports an error number: hosts read the number back out of it.
HRESULT hresult_of(ErrorNumber number);

/// Runs the body of an interface's function.
/// Returns  S_OK, or the HRESULT of the failure.
template <typename Body>
HRESULT trapped(Body body) {
    try {
        body();
        return S_OK;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return hresult_of(number_of_current_exception());
    }
}

/// The arguments of a call by name, in the order of their positions, references resolved.
class CallArguments {
public:
    explicit CallArguments(const DISPPARAMS& parameters);

    [[nodiscard]] std::size_t size() const { return values_.size(); }

    /// The argument at a position, converted. Errors: type_mismatch; wrong_argument_count if there is none.
    [[nodiscard]] Text text(std::size_t position) const;

private:
    std::vector<OwnedVariant> values_;
};

/// How many objects of the stand-ins are alive: after a test as many as before it.
inline std::atomic<long> objects_alive = 0;

/// A member that scripts call by name. It puts its result, if it has one, into the VARIANT.
template <typename Object>
struct ScriptMember {
    std::wstring_view name;
    void (*call)(Object& object, const CallArguments& arguments, VARIANT& result);
};

/// The common half of a COM object with one dual interface: counting, and calls by name.
///
/// `Derived` says which identifiers it answers to (`identifiers`) and which members scripts see (`script_members`, the
/// first of them the default member). DISPIDs are places in that list.
template <typename Derived, typename Interface>
class AutomationObject : public Interface {
public:
    AutomationObject() { ++objects_alive; }
    AutomationObject(const AutomationObject&) = delete;
    AutomationObject& operator=(const AutomationObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID identifier, void** object) override {
        *object = nullptr;
        const auto& known = derived().identifiers();
        const bool answers = identifier == IID_IUnknown || identifier == IID_IDispatch ||
                             std::find(std::begin(known), std::end(known), identifier) != std::end(known);
        if (!answers) return E_NOINTERFACE;
        *object = static_cast<Interface*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        std::fill_n(ids, count, DISPID_UNKNOWN);
        const auto& members = Derived::script_members();
        for (std::size_t i = 0; i < std::size(members) && count == 1; ++i) {
            if (lstrcmpiW(names[0], members[i].name.data()) == 0) ids[0] = static_cast<DISPID>(i);
        }
        return count == 1 && ids[0] != DISPID_UNKNOWN ? S_OK : DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT* result,
                                     EXCEPINFO* exception, UINT*) override {
        const auto& members = Derived::script_members();
        if (id < 0 || static_cast<std::size_t>(id) >= std::size(members)) return DISP_E_MEMBERNOTFOUND;
        OwnedVariant answer;
        const HRESULT outcome = trapped(
            [&] { members[static_cast<std::size_t>(id)].call(derived(), CallArguments(*parameters), *answer); });
        if (FAILED(outcome)) {
            if (exception != nullptr) {
                *exception = EXCEPINFO();
                exception->scode = outcome;
            }
            return DISP_E_EXCEPTION;
        }
        if (result != nullptr) *result = answer.detach();
        return S_OK;
    }

    [[nodiscard]] ULONG references() const { return references_; }

protected:
    virtual ~AutomationObject() { --objects_alive; }

private:
    Derived& derived() { return static_cast<Derived&>(*this); }

    std::atomic<ULONG> references_ = 0;
};

}  // namespace vantlo::test
