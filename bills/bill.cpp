#include "bills/bill.h"

#include <algorithm>

#include "automation/error.h"

namespace vantlo {

namespace {

Failure no_property(TextView column) { return {error::no_such_member, "a line has no property " + to_utf8(column)}; }

}  // namespace

void Record::set(TextView column, Variant value) { fields_.push_back({column, std::move(value)}); }

void Record::replace(TextView column, Variant value) {
    for (Field& field : fields_) {
        if (equal_ignoring_case(field.column, column)) {
            field.value = std::move(value);
            return;
        }
    }
    throw no_property(column);
}

const Variant& Record::value(TextView column) const {
    const Variant* const found = find(column);
    if (found == nullptr) throw no_property(column);
    return *found;
}

const Variant* Record::find(TextView column) const {
    const auto found =
        std::ranges::find_if(fields_, [&](const Field& field) { return equal_ignoring_case(field.column, column); });
    return found == fields_.end() ? nullptr : &found->value;
}

Variant empty_value(ColumnType type) {
    switch (type) {
        case ColumnType::single: return 0.0F;
        case ColumnType::whole_number: return std::int32_t{0};
        case ColumnType::date: return Null{};
        case ColumnType::text: break;
    }
    return Text();
}

Record empty_record(std::span<const BillColumn> columns) {
    Record record;
    for (const BillColumn& column : columns) record.set(column.column, empty_value(column.type));
    return record;
}

Record read_row(Recordset& rows, std::span<const BillColumn> columns) {
    Record record;
    for (const BillColumn& column : columns) record.set(column.column, rows.field(column.column));
    return record;
}

Variant RecordLine::value(TextView name) {
    const bool is_warehouse = warehouse_column_ != nullptr && equal_ignoring_case(name, u"WarehouseId");
    return record_.value(is_warehouse ? warehouse_column_ : name);
}

}  // namespace vantlo
