#pragma once

#include <ole2.h>

#include <span>

namespace vantlo {

class InventoryObject;

/// The dispatch identifier of a member's name, and those of its parameters' names behind it.
/// Returns  S_OK, or DISP_E_UNKNOWNNAME with DISPID_UNKNOWN in the places of unknown names.
HRESULT dispatch_identifiers(std::span<LPOLESTR> names, DISPID* identifiers);

/// One call through IDispatch, in every shape that script engines give it: values, typed references, references to
/// variants, arguments left out in the middle or at the end, named arguments, texts for numbers. Nothing is written back.
struct Invocation {
    InventoryObject& object;
    WORD flags;
    const DISPPARAMS& parameters;
    VARIANT* result;
    UINT* wrong_argument;

    /// Errors   DISP_E_MEMBERNOTFOUND, DISP_E_BADPARAMCOUNT, DISP_E_PARAMNOTOPTIONAL, DISP_E_TYPEMISMATCH and the like;
    ///          the index of the argument at fault is handed over where there is one.
    HRESULT run(DISPID identifier);
};

}  // namespace vantlo
