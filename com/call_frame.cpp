#include "com/call_frame.h"

#include <vantlo.h>  // made from com/idl/vantlo.idl

#include "ado/com/interface_pointer.h"
#include "automation/error_text.h"

namespace vantlo {

namespace {

const char16_t* text_for_user(HRESULT result) {
    const bool is_chinese = PRIMARYLANGID(GetUserDefaultUILanguage()) == LANG_CHINESE;
    return standard_text(result, is_chinese ? Language::chinese : Language::english);
}

/// An error object with a failure's text, or none where there is no memory for it.
InterfacePointer<IErrorInfo> error_object(HRESULT result) {
    InterfacePointer<IErrorInfo> error;
    InterfacePointer<ICreateErrorInfo> writer;
    if (FAILED(CreateErrorInfo(writer.receive()))) return error;
    wchar_t source[] = L"Vantlo.Inventory_Class";
    writer->SetGUID(IID__Inventory_Class);
    writer->SetSource(source);
    // The text is only read, but declared without const.
    writer->SetDescription(reinterpret_cast<wchar_t*>(const_cast<char16_t*>(text_for_user(result))));
    writer->QueryInterface(IID_IErrorInfo, error.receive_any());
    return error;
}

}  // namespace

void leave_error_object(HRESULT result) noexcept {
    SetErrorInfo(0, FAILED(result) ? error_object(result).get() : nullptr);
}

HRESULT result_of_current_exception() noexcept {
    return number_of_current_exception() == error::type_mismatch ? DISP_E_TYPEMISMATCH : E_OUTOFMEMORY;
}

}  // namespace vantlo
