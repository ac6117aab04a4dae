#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ado/native/native_connection.h"

namespace vantlo {

/// A row of the ledger as it can be brought back: its columns, a host's further ones included, each with the SQL literal of
/// its value. The engine makes the literals, so that nothing is lost: a text as a quantity, a blob, every digit.
struct RowImage {
    struct Field {
        std::string column;
        Text literal;

        friend auto operator<=>(const Field&, const Field&) = default;
    };
    std::vector<Field> fields;

    /// The literal of a column, its name in any case; null if the row has no such column.
    [[nodiscard]] const Text* literal(TextView column) const;

    friend auto operator<=>(const RowImage&, const RowImage&) = default;
};

/// The columns in which two rows differ, of those that the ledger has in every database: what a host keeps in further
/// columns is its own matter.
std::vector<TextView> differing_columns(const RowImage& left, const RowImage& right);

/// Whether the rows are the same ones, in any order, by those columns.
bool are_same_rows(const std::vector<RowImage>& left, const std::vector<RowImage>& right);

/// The condition that finds the rows of the image's key. Example: `WID='W1' and GId='G1' and Model1='' and Model2 is null and Status=0`
Text condition_of(const RowImage& image);

/// An image as a text, and back. Shape: a JSON object of the columns, each with its literal. Returns nothing for another text.
Text text_of(const RowImage& image);
std::optional<RowImage> image_from(TextView text);

/// Takes images of a database's ledger, and makes the statements that bring them back.
class RowImages {
public:
    /// Reads which columns the ledger has. Errors   Failure.
    explicit RowImages(NativeConnection& database);

    /// The rows that meet a condition. Errors   Failure.
    [[nodiscard]] std::vector<RowImage> of(const Text& condition) const;

    [[nodiscard]] Text insertion_of(const RowImage& image) const;

    /// Makes one row of a key the other, in the columns in which they differ.
    [[nodiscard]] static Text update_of(const RowImage& from, const RowImage& to);

private:
    struct Column {
        std::string name;
        Text expression;  ///< of the literal; empty if the adapter makes it
    };

    NativeConnection& database_;
    std::vector<Column> columns_;
};

}  // namespace vantlo
