#pragma once

#include "ado/recordset.h"
#include "automation/text.h"
#include "automation/variant.h"

namespace vantlo {

/// One line of a bill. Its properties are read by name, and may change between two reads.
class Line {
public:
    Line() = default;
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    /// Errors   those of the host's object or the recordset.
    [[nodiscard]] virtual Variant value(TextView name) = 0;

protected:
    ~Line() = default;
};

/// The current row of a recordset of bill lines.
class StoredLine final : public Line {
public:
    explicit StoredLine(Recordset& rows) : rows_(rows) {}

    Variant value(TextView name) override { return rows_.field(name); }

private:
    Recordset& rows_;
};

/// A line whose values are converted to texts: Empty becomes the empty text, Null fails.
class TextLine final : public Line {
public:
    explicit TextLine(Line& line) : line_(line) {}

    Variant value(TextView name) override {
        Variant value = line_.value(name);
        if (value.is<Text>()) return value;
        return to_text(value);
    }

private:
    Line& line_;
};

}  // namespace vantlo
