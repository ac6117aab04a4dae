#pragma once

#include <cstdint>
#include <limits>
#include <optional>

#include "ado/native/native_connection.h"
#include "reports/selection.h"

namespace vantlo {

/// The movements of a period, by their numbers: from the first one, included, to the other, excluded.
struct MovementRange {
    std::int64_t from;
    std::int64_t until;
};

inline constexpr MovementRange all_movements{0, std::numeric_limits<std::int64_t>::max()};

/// The movements of the days of a period, as the local calendar has them. Numbers rise with time, so the ends are found by
/// halving, without an index on times.
/// Errors   Failure, if there is no journal of movements.
MovementRange movements_within(NativeConnection& database, const Period& period);

/// The latest movements of a journal.
struct NewestMovements {
    std::int64_t from = 0;       ///< the number of the first of them
    std::optional<Date> begins;  ///< its local time, where there are earlier ones; nothing if these are all
};

/// The newest movements, `most` at most and hardly fewer: numbers need not follow each other, so the first is found by halving.
/// Errors   Failure, if there is no journal of movements.
NewestMovements newest_movements(NativeConnection& database, std::int64_t most);

/// The condition that a movement is one of the range, ` and ` before it.
Text and_numbered(const MovementRange& range);

/// The numbers of the first and the last movement; 0 if there is none.
struct MovementNumbers {
    std::int64_t first = 0;
    std::int64_t last = 0;
};

/// Errors   Failure, if there is no journal of movements.
MovementNumbers movement_numbers(NativeConnection& database);

/// Whether the first movement of that number or a later one tells what changed while the journal was off.
/// Errors   as above.
bool is_gap(NativeConnection& database, std::int64_t number);

/// Whether a movement of that number would have been the next at a time of this machine's clock: those before it are not
/// later, give or take some minutes by which the clocks of two machines may differ.
/// Errors   as above.
bool was_next_movement_at(NativeConnection& database, std::int64_t number, Date moment);

/// The time of this machine's clock.
Date local_now();

/// The local time at which the journal's clock showed `clock`.
Date local_time(const Dialect& dialect, Date clock);

/// When the journal begins: the local time of its first movement; nothing if it has none.
/// Errors   Failure, if there is no journal of movements.
std::optional<Date> journal_begins(NativeConnection& database);

}  // namespace vantlo
