#include "com/inventory_object.h"

#include "ado/com/com_connection.h"
#include "ado/com/hresult.h"
#include "com/invocation.h"
#include "com/server.h"
#include "com/thread_state.h"

namespace vantlo {

namespace {

/// One of the types in the library that the component carries.
HRESULT find_type(REFGUID identifier, ITypeInfo** information) {
    if (information == nullptr) return E_POINTER;
    *information = nullptr;
    return guarded([&] {
        InterfacePointer<ITypeLib> library;
        const HRESULT result = LoadTypeLibEx(server::path().c_str(), REGKIND_NONE, library.receive());
        return FAILED(result) ? result : library->GetTypeInfoOfGuid(identifier, information);
    });
}

}  // namespace

InventoryObject::InventoryObject() { server::hold(); }

HRESULT InventoryObject::QueryInterface(REFIID identifier, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (identifier == IID_IUnknown || identifier == IID_IDispatch || identifier == IID__Inventory_Class) {
        *object = static_cast<_Inventory_Class*>(this);
    } else if (identifier == IID_IProvideClassInfo) {
        *object = static_cast<ClassInformationProvider*>(this);
    } else if (identifier == IID_ISupportErrorInfo) {
        *object = static_cast<ISupportErrorInfo*>(this);
    } else {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG InventoryObject::AddRef() { return static_cast<ULONG>(InterlockedIncrement(&references_)); }

ULONG InventoryObject::Release() {
    const long left = InterlockedDecrement(&references_);
    if (left == 0) {
        delete this;
        // Behind the members, which release what the host gave them: the host may ask meanwhile.
        server::let_go();
    }
    return static_cast<ULONG>(left);
}

HRESULT InventoryObject::GetTypeInfoCount(UINT* count) {
    if (count == nullptr) return E_POINTER;
    *count = 1;
    return S_OK;
}

HRESULT InventoryObject::GetTypeInfo(UINT index, LCID, ITypeInfo** information) {
    if (information == nullptr) return E_POINTER;
    *information = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    return find_type(IID__Inventory_Class, information);
}

HRESULT InventoryObject::class_information(ITypeInfo** information) {
    return find_type(CLSID_Inventory_Class, information);
}

HRESULT InventoryObject::InterfaceSupportsErrorInfo(REFIID identifier) {
    return identifier == IID__Inventory_Class || identifier == IID_IDispatch ? S_OK : S_FALSE;
}

HRESULT InventoryObject::GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID, DISPID* identifiers) {
    if (reserved != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    if (names == nullptr || identifiers == nullptr) return E_POINTER;
    return guarded([&] { return dispatch_identifiers(std::span(names, count), identifiers); });
}

HRESULT InventoryObject::Invoke(DISPID identifier, REFIID reserved, LCID, WORD flags, DISPPARAMS* parameters,
                                VARIANT* result, EXCEPINFO*, UINT* wrong_argument) {
    if (reserved != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    if (parameters == nullptr) return E_POINTER;
    return framed_call([&] {
        const InterfacePointer<_Inventory_Class> held(this);  // the host may release the object during the call
        return Invocation{*this, flags, *parameters, result, wrong_argument}.run(identifier);
    });
}

HRESULT InventoryObject::get_DATAType(BSTR* value) {
    return framed_call([&] {
        if (value == nullptr) return E_POINTER;
        const Text& kind = component_.DATAType();
        *value = SysAllocStringLen(reinterpret_cast<const OLECHAR*>(kind.data()), static_cast<UINT>(kind.size()));
        return *value != nullptr ? S_OK : E_OUTOFMEMORY;
    });
}

HRESULT InventoryObject::put_DATAType(BSTR value) {
    return framed_call([&] {
        component_.let_DATAType(text_of(value));
        return S_OK;
    });
}

HRESULT InventoryObject::get_ADOConn(_Connection** value) {
    return framed_call([&] {
        if (value == nullptr) return E_POINTER;
        *value = nullptr;
        auto* const connection = static_cast<ComConnection*>(component_.ADOConn());
        if (connection == nullptr) return S_OK;
        *value = reinterpret_cast<_Connection*>(&connection->object());
        (*value)->AddRef();
        return S_OK;
    });
}

HRESULT InventoryObject::putref_ADOConn(_Connection* value) {
    return framed_call([&] {
        const InterfacePointer<_Inventory_Class> held(this);  // the connection that is released may release the object
        const ConnectionReference connection = value != nullptr ? ComConnection::of(*value) : ConnectionReference();
        component_.set_ADOConn(connection.get());
        thread_state::watch_apartment();
        return S_OK;
    });
}

}  // namespace vantlo
