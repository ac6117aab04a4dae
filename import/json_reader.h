#pragma once

#include <functional>
#include <optional>

#include "import/input_errors.h"
#include "import/input_value.h"

namespace vantlo {

/// Takes an element of a list; `list` has its name but not its elements.
using TakeElement = std::function<void(const InputValue& list, const InputValue& element)>;

/// Reads one JSON document, an object of lists. Elements are handed over as they are read; the document is never held
/// as a whole.
/// Returns  the object, its lists without elements; nothing for invalid JSON.
/// Errors   invalid JSON, and an object with one name twice, is reported and ends the reading.
std::optional<InputValue> read_json(const SourceText& source, InputErrors& errors, const TakeElement& take);

/// Reads JSON Lines: one document a line, each handed over whole. Empty lines are skipped.
/// Errors   a line of invalid JSON is reported and skipped.
void read_json_lines(const SourceText& source, InputErrors& errors, const std::function<void(InputValue&)>& take);

}  // namespace vantlo
