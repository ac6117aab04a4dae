#include "tests/support/ado_stand_in/ado_interfaces.h"

// The headers of identifiers hold one macro for each, which asks GUID_BUILDER for its form.
#define GUID_BUILDER(name, data1, data2, data3, b1, b2, b3, b4, b5, b6, b7, b8)                             \
    {                                                                                                       \
        0x##data1, 0x##data2, 0x##data3, { 0x##b1, 0x##b2, 0x##b3, 0x##b4, 0x##b5, 0x##b6, 0x##b7, 0x##b8 } \
    }
#define INCLUDING_ADOGUIDS
#include <adogpool_backcompat.h>

namespace vantlo::test::ado {

const CLSID connection_class = CLSID_CADOConnection;
const CLSID recordset_class = CLSID_CADORecordset;

const IID identifier_of_ado = IID__ADO;
const IID identifier_of_connection_15 = IID_IADOConnection15;
const IID identifier_of_connection = IID_IADOConnection;
const IID identifier_of_recordset_15 = IID_IADORecordset15;
const IID identifier_of_recordset_20 = IID_IADORecordset20;
const IID identifier_of_recordset_21 = IID_IADORecordset21;
const IID identifier_of_recordset = IID_IADORecordset;
const IID identifier_of_fields_15 = IID_IADOFields15;
const IID identifier_of_fields_20 = IID_IADOFields20;
const IID identifier_of_fields = IID_IADOFields;
const IID identifier_of_field_20 = IID_IADOField20;
const IID identifier_of_field = IID_IADOField;

#undef IID_IADOConnection
#include <adogpool.h>
const IID identifier_of_later_connection = IID_IADOConnection;

}  // namespace vantlo::test::ado
