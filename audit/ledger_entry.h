#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "ado/native/native_connection.h"
#include "audit/broken_value.h"

namespace vantlo {

/// The columns that tell ledger rows apart, and those that are counted.
inline constexpr std::array<const char16_t*, 5> key_columns = {u"WID", u"GId", u"Model1", u"Model2", u"Status"};
inline constexpr std::array<const char16_t*, 3> quantity_columns = {u"InQty", u"OutQty", u"CurrentQty"};
inline constexpr std::array<const char16_t*, 3> detail_columns = {u"Class", u"Unit", u"Remarks"};
inline constexpr std::size_t status_part = 4;

/// A ledger row's key as it stands in the table, blanks and all; a part can be null.
struct LedgerKey {
    std::array<std::optional<Text>, key_columns.size()> parts;

    friend auto operator<=>(const LedgerKey&, const LedgerKey&) = default;
};

/// Received, issued and on hand, in ten-thousandths: what a row has, or what is added to it.
using Amounts = std::array<std::int64_t, quantity_columns.size()>;

Amounts operator+(const Amounts& left, const Amounts& right);
Amounts operator-(const Amounts& left, const Amounts& right);
inline Amounts operator-(const Amounts& amounts) { return Amounts{} - amounts; }

/// Whether received less issued is on hand.
inline bool is_balanced(const Amounts& amounts) { return amounts[0] - amounts[1] == amounts[2]; }

using AmountsByKey = std::map<LedgerKey, Amounts>;

void add_to(AmountsByKey& amounts, const LedgerKey& key, const Amounts& added);

/// A row of the ledger as it is stored.
struct LedgerEntry {
    LedgerKey key;
    std::array<std::optional<std::int64_t>, quantity_columns.size()> quantities;  ///< nothing for null and no number
    std::array<Variant, detail_columns.size()> details;
    std::vector<BrokenValue> broken = {};  ///< in the key and the quantities; a part of the key without a text is null

    /// The quantities, null counted as 0.
    [[nodiscard]] Amounts amounts() const;
    [[nodiscard]] bool has_null() const;
    /// Whether a part of the key has no text, so that no condition finds the row.
    [[nodiscard]] bool has_no_key() const;

    friend bool operator==(const LedgerEntry&, const LedgerEntry&) = default;
};

/// The key of the row that a recordset stands on; what is broken in it is added to `broken`.
LedgerKey read_key(Recordset& rows, std::vector<BrokenValue>& broken);

/// The row that a recordset of whole ledger rows stands on.
LedgerEntry read_entry(Recordset& rows);

/// The ledger, by key.
std::vector<LedgerEntry> read_entries(NativeConnection& database);

/// The key as a condition that finds exactly this row's like: nothing trimmed, null as `is null`.
/// Example  `WID='W1' and GId='G1 ' and Model1='' and Model2 is null and Status=0`
Text condition_of(const LedgerKey& key);

/// Whether a text is a whole number of any size, as a status is written without quotes.
bool is_whole_number(TextView text);

/// A text as an SQL literal, as it stands: quotes doubled, blanks kept.
Text exact_literal(TextView text);

}  // namespace vantlo
