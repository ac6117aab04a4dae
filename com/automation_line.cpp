#include "com/automation_line.h"

#include <dispex.h>

#include "ado/com/automation_value.h"
#include "ado/com/hresult.h"
#include "com/line_interfaces.h"

namespace vantlo {

namespace {

/// IDispatchEx, which the compiler's libraries do not define.
constexpr GUID dispatch_ex_identifier = {0xA6EF9860, 0xC720, 0x11D0, {0x93, 0x37, 0x00, 0xA0, 0xC9, 0x0D, 0xCA, 0xA9}};

/// The dispatch identifier of a property.
/// Source   a script's class instance may know its properties through IDispatchEx alone; a plain object lacks that one.
HRESULT find_property(IDispatch& object, TextView name, DISPID& identifier) {
    const AutomationString text(name);
    BSTR names = text.get();
    const HRESULT result = object.GetIDsOfNames(IID_NULL, &names, 1, LOCALE_SYSTEM_DEFAULT, &identifier);
    if (SUCCEEDED(result)) return result;
    const auto extended = interface_of<IDispatchEx>(object, dispatch_ex_identifier);
    return !extended ? result : extended->GetDispID(text.get(), fdexNameCaseInsensitive, &identifier);
}

/// What an object's own exception says, taken out and freed.
ErrorNumber taken_number(EXCEPINFO& exception) {
    if (exception.pfnDeferredFillIn != nullptr) exception.pfnDeferredFillIn(&exception);
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrHelpFile);
    if (exception.wCode != 0) return exception.wCode;
    return FAILED(exception.scode) ? error_number(exception.scode) : error::automation_error;
}

}  // namespace

Variant AutomationLine::value(TextView name) {
    if (!object_) throw Failure(error::object_not_set);
    Variant value;
    if (IDispatch* const line = declared(); line != nullptr && read_declared(type_, *line, name, value)) return value;
    return value_by_name(name);
}

IDispatch* AutomationLine::declared() {
    const IID* const identifier = declared_interface(type_);
    if (!is_asked_ && identifier != nullptr) {
        is_asked_ = true;
        declared_ = interface_of<IDispatch>(*object_.get(), *identifier);
    }
    return declared_.get();
}

Variant AutomationLine::value_by_name(TextView name) const {
    DISPID identifier = DISPID_UNKNOWN;
    check(find_property(*object_.get(), name, identifier), "a property of the line object");
    DISPPARAMS none{};
    EXCEPINFO exception{};
    AutomationValue value;
    const HRESULT result = value.receive_from([&](VARIANT* received) {
        return object_->Invoke(identifier, IID_NULL, LOCALE_SYSTEM_DEFAULT, DISPATCH_PROPERTYGET, &none, received,
                               &exception, nullptr);
    });
    if (result == DISP_E_EXCEPTION) throw Failure(taken_number(exception));
    check(result, "a property of the line object");
    return variant_of(value.get());
}

}  // namespace vantlo
