#pragma once

#include <string>
#include <vector>

#include "ado/recordset.h"
#include "automation/variant.h"
#include "bills/bill_kinds.h"
#include "posting/line.h"

namespace vantlo {

/// A row with values by column name, compared without regard to case: a header or a line.
class Record {
public:
    /// Adds a column, which the record must not have yet.
    void set(TextView column, Variant value);

    /// Gives a column that it has another value. Errors: no_such_member.
    void replace(TextView column, Variant value);

    /// Errors   no_such_member for a column that it lacks, as an automation object answers.
    [[nodiscard]] const Variant& value(TextView column) const;

    /// Null for a column that it lacks.
    [[nodiscard]] const Variant* find(TextView column) const;

    struct Field {
        TextView column;  ///< lives as long as the table of bill kinds
        Variant value;
    };
    [[nodiscard]] const std::vector<Field>& fields() const { return fields_; }

private:
    std::vector<Field> fields_;
};

/// What a column holds where a bill leaves it out: texts are empty, numbers 0, dates null.
Variant empty_value(ColumnType type);

/// A record of these columns, each left out.
Record empty_record(std::span<const BillColumn> columns);

/// The columns of the row that a recordset stands on.
Record read_row(Recordset& rows, std::span<const BillColumn> columns);

/// A record as the line object that a native host hands to the component.
class RecordLine final : public Line {
public:
    /// `warehouse_column` names the column that the line shows as WarehouseId; null if it has no such property.
    RecordLine(const Record& record, const char16_t* warehouse_column)
        : record_(record), warehouse_column_(warehouse_column) {}

    Variant value(TextView name) override;

private:
    const Record& record_;
    const char16_t* warehouse_column_;
};

/// A bill in hand: its header and its lines.
struct Bill {
    const BillKind* kind = nullptr;
    Text id;
    Record header;
    std::vector<Record> lines;
};

}  // namespace vantlo
