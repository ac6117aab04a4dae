#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "automation/variant.h"

namespace vantlo {

/// An engine behind ODBC, and what a connection to it is told before anything else.
struct Engine {
    std::string_view name;  ///< part of the name that it gives itself
    const char* dialect;
    const char16_t* settings[3];
    const char16_t* probe;  ///< a select whose one row literal_hazard judges
    const char16_t*
        cluster_probe;  ///< tells the setting that makes a server the node of a cluster; null if it has none
};

/// The engine that gives itself a name; a general one for every other name.
const Engine& engine_named(std::string_view name);

/// Why literals are not safe on a connection, by the row that the engine's probe returned; empty if they are.
std::string literal_hazard(const std::vector<Variant>& probed);

}  // namespace vantlo
