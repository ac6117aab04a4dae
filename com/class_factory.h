#pragma once

#include <ole2.h>

namespace vantlo {

/// Makes objects of the one class. There is one factory for the whole process; references to it keep the library loaded.
class ClassFactory final : public IClassFactory {
public:
    static ClassFactory& instance();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID identifier, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID identifier, void** object) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;

private:
    ClassFactory() = default;
    ~ClassFactory() = default;
};

}  // namespace vantlo
