#pragma once

#include "automation/text.h"
#include "automation/variant.h"

namespace vantlo {

/// An SQL statement built from its fixed pieces and the literals of values.
class Statement {
public:
    Statement() { text_.reserve(usual_length); }

    Statement& piece(TextView text) {
        text_ += text;
        return *this;
    }

    /// Appends a value as GetSqlVal writes it.
    Statement& literal(const Variant& value);

    /// Appends a value as CStr writes it, without quotes. Errors: invalid_use_of_null for Null.
    Statement& unquoted(const Variant& value);

    [[nodiscard]] TextView text() const { return text_; }

private:
    static constexpr std::size_t usual_length = 320;

    Text text_;
};

/// `select` followed by the literal of a bill's identifier.
Statement select_by_id(TextView select, const Text& id);

}  // namespace vantlo
