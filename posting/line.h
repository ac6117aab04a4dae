#pragma once

#include "ado/recordset.h"
#include "automation/text.h"
#include "automation/variant.h"

namespace vantlo {

/// One line of a bill: it answers for its properties by name, afresh each time it is asked.
class Line {
public:
    Line() = default;
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    /// Errors   Failure, under the number that the host's object or the recordset gives.
    [[nodiscard]] virtual Variant value(TextView name) = 0;

protected:
    ~Line() = default;
};

/// The line that a recordset of bill lines stands on.
class StoredLine final : public Line {
public:
    explicit StoredLine(Recordset& rows) : rows_(rows) {}

    Variant value(TextView name) override { return rows_.field(name); }

private:
    Recordset& rows_;
};

/// A line whose values are all taken as texts: an empty attribute is the empty text, a null one fails its conversion.
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
