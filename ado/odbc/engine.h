#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "automation/variant.h"

namespace vantlo {

/// An engine behind ODBC: what a connection to it sets and checks at first.
struct Engine {
    std::string_view name;  ///< part of the name that it gives itself
    const char* dialect;
    const char16_t* settings[3];
    const char16_t* probe;          ///< a select whose one row literal_hazard judges
    const char16_t* cluster_probe;  ///< asks for the setting that says whether it is a cluster's node; null for none
};

/// The engine that gives itself a name; a general one for every other name.
const Engine& engine_named(std::string_view name);

/// Why literals are not safe on a connection, by the row that the engine's probe returned; empty if they are.
std::string literal_hazard(const std::vector<Variant>& probed);

}  // namespace vantlo
