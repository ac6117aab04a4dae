#pragma once

#include <ole2.h>

namespace vantlo {

// What is called of ADO 2.6's dual interfaces, each function at its place in the vtable. The places between are never
// called. A test holds the places against the compiler's own headers.

#define VANTLO_UNUSED_SLOT(number) virtual void STDMETHODCALLTYPE unused_##number() = 0

struct AdoRecordset;

struct AdoConnection : IDispatch {
    VANTLO_UNUSED_SLOT(7);
    VANTLO_UNUSED_SLOT(8);
    VANTLO_UNUSED_SLOT(9);
    VANTLO_UNUSED_SLOT(10);
    VANTLO_UNUSED_SLOT(11);
    VANTLO_UNUSED_SLOT(12);
    VANTLO_UNUSED_SLOT(13);
    VANTLO_UNUSED_SLOT(14);
    VANTLO_UNUSED_SLOT(15);
    virtual HRESULT STDMETHODCALLTYPE Execute(BSTR command, VARIANT* records_affected, long options,
                                              AdoRecordset** rows) = 0;
};

struct AdoField : IDispatch {
    VANTLO_UNUSED_SLOT(7);
    VANTLO_UNUSED_SLOT(8);
    VANTLO_UNUSED_SLOT(9);
    VANTLO_UNUSED_SLOT(10);
    VANTLO_UNUSED_SLOT(11);
    VANTLO_UNUSED_SLOT(12);
    virtual HRESULT STDMETHODCALLTYPE get_Value(VARIANT* value) = 0;
};

struct AdoFields : IDispatch {
    VANTLO_UNUSED_SLOT(7);
    VANTLO_UNUSED_SLOT(8);
    VANTLO_UNUSED_SLOT(9);
    virtual HRESULT STDMETHODCALLTYPE get_Item(VARIANT index, AdoField** field) = 0;
};

struct AdoRecordset : IDispatch {
    VANTLO_UNUSED_SLOT(7);
    VANTLO_UNUSED_SLOT(8);
    VANTLO_UNUSED_SLOT(9);
    virtual HRESULT STDMETHODCALLTYPE putref_ActiveConnection(IDispatch* connection) = 0;
    VANTLO_UNUSED_SLOT(11);
    VANTLO_UNUSED_SLOT(12);
    VANTLO_UNUSED_SLOT(13);
    VANTLO_UNUSED_SLOT(14);
    VANTLO_UNUSED_SLOT(15);
    VANTLO_UNUSED_SLOT(16);
    VANTLO_UNUSED_SLOT(17);
    VANTLO_UNUSED_SLOT(18);
    virtual HRESULT STDMETHODCALLTYPE put_CursorType(long type) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_EOF(VARIANT_BOOL* at_end) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Fields(AdoFields** fields) = 0;
    VANTLO_UNUSED_SLOT(22);
    VANTLO_UNUSED_SLOT(23);
    VANTLO_UNUSED_SLOT(24);
    VANTLO_UNUSED_SLOT(25);
    VANTLO_UNUSED_SLOT(26);
    VANTLO_UNUSED_SLOT(27);
    VANTLO_UNUSED_SLOT(28);
    VANTLO_UNUSED_SLOT(29);
    VANTLO_UNUSED_SLOT(30);
    VANTLO_UNUSED_SLOT(31);
    virtual HRESULT STDMETHODCALLTYPE Close() = 0;
    VANTLO_UNUSED_SLOT(33);
    VANTLO_UNUSED_SLOT(34);
    VANTLO_UNUSED_SLOT(35);
    virtual HRESULT STDMETHODCALLTYPE MoveNext() = 0;
    VANTLO_UNUSED_SLOT(37);
    VANTLO_UNUSED_SLOT(38);
    VANTLO_UNUSED_SLOT(39);
    virtual HRESULT STDMETHODCALLTYPE Open(VARIANT source, VARIANT connection, long cursor_type, long lock_type,
                                           long options) = 0;
    VANTLO_UNUSED_SLOT(41);
    VANTLO_UNUSED_SLOT(42);
    VANTLO_UNUSED_SLOT(43);
    VANTLO_UNUSED_SLOT(44);
    VANTLO_UNUSED_SLOT(45);
    VANTLO_UNUSED_SLOT(46);
    VANTLO_UNUSED_SLOT(47);
    VANTLO_UNUSED_SLOT(48);
    VANTLO_UNUSED_SLOT(49);
    VANTLO_UNUSED_SLOT(50);
    VANTLO_UNUSED_SLOT(51);
    VANTLO_UNUSED_SLOT(52);
    VANTLO_UNUSED_SLOT(53);
    VANTLO_UNUSED_SLOT(54);
    virtual HRESULT STDMETHODCALLTYPE get_State(long* state) = 0;
    VANTLO_UNUSED_SLOT(56);
    VANTLO_UNUSED_SLOT(57);
    VANTLO_UNUSED_SLOT(58);
    VANTLO_UNUSED_SLOT(59);
    virtual HRESULT STDMETHODCALLTYPE put_CursorLocation(long location) = 0;
};

#undef VANTLO_UNUSED_SLOT

/// ADO's identifiers changed their second digit with an update of Windows; either generation has the same vtable.
struct AdoIdentifier {
    GUID first;
    GUID later;
};

constexpr GUID ado_guid(unsigned long number) {
    return {number, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x6D, 0x2E, 0xA4}};
}

inline constexpr AdoIdentifier connection_identifier{ado_guid(0x00000550), ado_guid(0x00001550)};
inline constexpr AdoIdentifier recordset_identifier{ado_guid(0x00000556), ado_guid(0x00001556)};
inline constexpr GUID recordset_class = ado_guid(0x00000535);

}  // namespace vantlo
