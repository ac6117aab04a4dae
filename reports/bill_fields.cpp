#include "reports/bill_fields.h"

#include <algorithm>

namespace vantlo {

namespace {

FieldNeed need_of(const BillKind& kind, BillPart part, std::string_view field) {
    if (field_use_of(kind).is_warehouse(part, field)) return FieldNeed::warehouse;
    return field == "goods" || field == "quantity" ? FieldNeed::needed : FieldNeed::optional;
}

}  // namespace

std::vector<BillField> fields_of(const BillKind& kind) {
    std::vector<BillField> fields;
    for (const BillPart part : {BillPart::header, BillPart::line}) {
        for (const BillColumn& column : columns_of(kind, part)) {
            const bool is_there = std::ranges::any_of(
                fields, [&](const BillField& field) { return field.part == part && field.field == column.field; });
            if (is_there || field_use_of(kind).is_ignored(part, column.field)) continue;
            fields.push_back({part, column.field, column.type, need_of(kind, part, column.field)});
        }
    }
    return fields;
}

}  // namespace vantlo
