#include "com/class_factory.h"

#include <new>

#include "com/inventory_object.h"
#include "com/server.h"
#include "com/thread_state.h"

namespace vantlo {

namespace {

/// A new object with one reference; null if there is no memory for it.
InventoryObject* make_object() noexcept {
    try {
        return thread_state::prepare() ? new InventoryObject : nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace

ClassFactory& ClassFactory::instance() {
    static ClassFactory factory;
    return factory;
}

HRESULT ClassFactory::QueryInterface(REFIID identifier, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (identifier != IID_IUnknown && identifier != IID_IClassFactory) return E_NOINTERFACE;
    *object = static_cast<IClassFactory*>(this);
    AddRef();
    return S_OK;
}

// It is never deleted, so its references count for the server alone; the numbers are what a counted object would say.
ULONG ClassFactory::AddRef() {
    server::hold();
    return 2;
}

ULONG ClassFactory::Release() {
    server::let_go();
    return 1;
}

HRESULT ClassFactory::CreateInstance(IUnknown* outer, REFIID identifier, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    InventoryObject* const made = make_object();
    if (made == nullptr) return E_OUTOFMEMORY;
    const HRESULT result = made->QueryInterface(identifier, object);
    made->Release();
    return result;
}

HRESULT ClassFactory::LockServer(BOOL lock) {
    if (lock) {
        server::hold();
    } else {
        server::let_go();
    }
    return S_OK;
}

}  // namespace vantlo
