#include "audit/verification.h"

namespace vantlo {

Verification verify(NativeConnection& database, Language language) {
    Verification verification;
    verification.timeline = read_timeline(database);
    verification.stored = read_entries(database);
    verification.columns = read_columns(database);
    verification.expected = recompute(database, verification.timeline, language);
    verification.findings = compare(verification.stored, verification.expected, verification.timeline);
    return verification;
}

}  // namespace vantlo
