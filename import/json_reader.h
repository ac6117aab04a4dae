#pragma once

#include <functional>
#include <optional>

#include "import/input_errors.h"
#include "import/input_value.h"

namespace vantlo {

/// Takes an element of a list; `list` has its name but not its elements.
using TakeElement = std::function<void(const InputValue& list, const InputValue& element)>;

/// Reads one JSON document, an object of lists whose elements are handed over as they are read, so that a long file is
/// never held as a tree.
/// Returns  the object, its lists without elements; nothing if the text is no JSON.
/// Errors   what is no JSON is told and ends the reading; so does an object with one name twice.
std::optional<InputValue> read_json(const SourceText& source, InputErrors& errors, const TakeElement& take);

/// Reads JSON Lines: one document a line, each handed over whole. Empty lines are passed over.
/// Errors   a line that is no JSON is told and passed over.
void read_json_lines(const SourceText& source, InputErrors& errors, const std::function<void(InputValue&)>& take);

}  // namespace vantlo
