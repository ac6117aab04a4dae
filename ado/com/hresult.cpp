#include "ado/com/hresult.h"

#include <cstdint>
#include <string>

namespace vantlo {

namespace {

struct NumberRow {
    HRESULT result;
    ErrorNumber number;
};

// clang-format off
constexpr NumberRow numbers[] = {
    {DISP_E_UNKNOWNINTERFACE, error::no_such_interface},
    {DISP_E_MEMBERNOTFOUND,   error::no_such_member},
    {DISP_E_UNKNOWNNAME,      error::no_such_member},
    {DISP_E_PARAMNOTFOUND,    error::named_argument_not_found},
    {DISP_E_PARAMNOTOPTIONAL, error::argument_not_optional},
    {DISP_E_TYPEMISMATCH,     error::type_mismatch},
    {DISP_E_BADVARTYPE,       error::bad_type},
    {DISP_E_OVERFLOW,         error::overflow},
    {DISP_E_BADINDEX,         9},
    {DISP_E_ARRAYISLOCKED,    10},
    {DISP_E_BADPARAMCOUNT,    error::wrong_argument_count},
    {DISP_E_NOTACOLLECTION,   451},
    {DISP_E_DIVBYZERO,        11},
    {REGDB_E_CLASSNOTREG,     429},
    {E_OUTOFMEMORY,           error::out_of_memory},
    {E_NOINTERFACE,           error::no_such_interface},
    {E_NOTIMPL,               error::no_such_action},
    {E_INVALIDARG,            error::invalid_call},
};
// clang-format on

constexpr std::uint32_t automation_facility = 0x800A0000;

}  // namespace

ErrorNumber error_number(HRESULT result) {
    const auto code = static_cast<std::uint32_t>(result);
    if ((code & 0xFFFF0000) == automation_facility && (code & 0xFFFF) != 0)
        return static_cast<ErrorNumber>(code & 0xFFFF);
    for (const NumberRow& row : numbers) {
        if (row.result == result) return row.number;
    }
    return result;
}

HRESULT dispatch_result(ErrorNumber number) {
    for (const NumberRow& row : numbers) {
        if (row.number == number) return row.result;
    }
    return number < 0 ? number : E_FAIL;
}

void check(HRESULT result, const char* what) {
    if (SUCCEEDED(result)) return;
    if (result == E_OUTOFMEMORY) throw Failure(error::out_of_memory);
    throw Failure(error_number(result), what);
}

}  // namespace vantlo
