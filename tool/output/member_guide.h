#pragma once

#include <span>

#include "automation/text.h"
#include "tool/output/words.h"

namespace vantlo {

/// The four movements of the ledger, as a person reads them.
enum class Move {
    receipt,
    issue,
    receipt_back,
    issue_back,
    issue_back_lowering,  ///< as issue_back, but a new row gets its stock on hand lowered
};

/// Where the status of the moved row comes from.
enum class StatusFrom { zero, one, two, argument, bill, line, conversion_source, conversion_target };

/// In which units the quantity moves.
enum class QuantityAs {
    base_units,
    as_it_stands,
    as_it_stands_when_new,  ///< on a new row; in base units where there is one
    base_units_when_new,    ///< on a new row; as it stands where there is one
};

/// One movement that a posting member makes for each line.
struct MemberMove {
    Move move;
    TextView warehouse;  ///< the line's property, or the argument, that names it
    StatusFrom status;
    QuantityAs quantity;
};

/// What a posting member does, for people.
struct MemberGuide {
    TextView member;
    std::span<const MemberMove> moves;
    const Message* note;  ///< what surprises; null if nothing does
};

/// The guides in the order of the interface.
std::span<const MemberGuide> member_guides();

/// The sign with which a movement enters the three counters of a new row.
struct Signs {
    int received, issued, on_hand;
};
Signs signs_of(Move move);

}  // namespace vantlo
