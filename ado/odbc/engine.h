#pragma once

#include <span>
#include <string_view>

#include "automation/text.h"

namespace vantlo {

/// A question to a new connection, and the answer of one that is safe.
struct Probe {
    const char16_t* query;  ///< a select of one field
    TextView safe;          ///< the field, as a text
    std::string_view hazard;
};

/// An engine behind ODBC: what a connection to it sets and checks at first. docs/databases.md names every setting of an
/// engine that could change what a statement does, and what is done about it.
struct Engine {
    std::string_view name;  ///< part of the name that it gives itself
    const char* dialect;
    std::span<const char16_t* const> settings;
    std::span<const Probe> probes;
    const char16_t* cluster_probe;  ///< asks for the setting that says whether it is a cluster's node; null for none
};

/// The engine that gives itself a name; a general one for every other name.
const Engine& engine_named(std::string_view name);

}  // namespace vantlo
