#pragma once

#include <vector>

#include "bills/field_use.h"

namespace vantlo {

/// What a kind of bill wants of a field.
enum class FieldNeed {
    needed,     ///< a bill without it is refused
    warehouse,  ///< the id of a warehouse whose stock moves; needed too
    optional,
};

/// A field of a bill file.
struct BillField {
    BillPart part;
    std::string_view field;
    ColumnType type;
    FieldNeed need;
};

/// The fields of a kind, the header's first, each once; those that only other kinds read are left out.
std::vector<BillField> fields_of(const BillKind& kind);

}  // namespace vantlo
