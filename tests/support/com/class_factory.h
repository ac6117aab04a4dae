#pragma once

#include <functional>
#include <utility>

#include "tests/support/com/automation_object.h"

namespace vantlo::test {

/// A class factory whose objects a function makes.
class ClassFactory final : public IClassFactory {
public:
    using Make = std::function<ComPointer<IUnknown>()>;  // Errors: Failure

    explicit ClassFactory(Make make) : make_(std::move(make)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID identifier, void** object) override {
        *object = nullptr;
        if (identifier != IID_IUnknown && identifier != IID_IClassFactory) return E_NOINTERFACE;
        *object = this;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID identifier, void** object) override {
        *object = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        ComPointer<IUnknown> made;
        const HRESULT outcome = trapped([&] { made = make_(); });
        return FAILED(outcome) ? outcome : made->QueryInterface(identifier, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

private:
    virtual ~ClassFactory() = default;

    std::atomic<ULONG> references_ = 0;
    Make make_;
};

/// A class that this thread's apartment finds in this process, as long as it lasts.
class ClassRegistration {
public:
    /// Errors: std::runtime_error.
    ClassRegistration(REFCLSID identifier, ClassFactory::Make make);
    ClassRegistration(const ClassRegistration&) = delete;
    ClassRegistration& operator=(const ClassRegistration&) = delete;
    ~ClassRegistration() { CoRevokeClassObject(cookie_); }

private:
    DWORD cookie_ = 0;
};

}  // namespace vantlo::test
