#pragma once

// The interfaces of ADO 2.6 and their identifiers, as the compiler's own headers declare them.
//
// Those headers are written for C: a class name alone on its line declares nothing in C++. Targets that include this
// are compiled with -fpermissive.

#include <ole2.h>
// Needs what the one above declares.
#include <adoint_backcompat.h>

namespace vantlo::test::ado {

extern const CLSID connection_class;
extern const CLSID recordset_class;

extern const IID identifier_of_ado;
extern const IID identifier_of_connection_15;
extern const IID identifier_of_connection;        // up to version 2.6 …
extern const IID identifier_of_later_connection;  // … and since a later one, for the same functions
extern const IID identifier_of_recordset_15;
extern const IID identifier_of_recordset_20;
extern const IID identifier_of_recordset_21;
extern const IID identifier_of_recordset;
extern const IID identifier_of_fields_15;
extern const IID identifier_of_fields_20;
extern const IID identifier_of_fields;
extern const IID identifier_of_field_20;
extern const IID identifier_of_field;

}  // namespace vantlo::test::ado
