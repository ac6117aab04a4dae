#include <doctest/doctest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// One `#include` line of the tree.
struct Include {
    std::string file;    ///< relative to the tree's root
    std::string target;  ///< as written between the brackets or quotes
    bool system = false;
};

/// What a line includes, or nothing when it is no `#include` line; `file` is left to the caller.
std::optional<Include> include_of(std::string_view line) {
    const auto skip = [&](std::string_view expected) {
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        if (!line.starts_with(expected)) return false;
        line.remove_prefix(expected.size());
        return true;
    };
    if (!skip("#") || !skip("include")) return std::nullopt;
    const bool system = skip("<");
    if (!system && !skip("\"")) return std::nullopt;
    const auto end = line.find(system ? '>' : '"');
    if (end == std::string_view::npos) return std::nullopt;
    return Include{{}, std::string(line.substr(0, end)), system};
}

std::vector<Include> includes_below(const std::string& folder) {
    const fs::path root = VANTLO_SOURCE_DIR;
    std::vector<Include> includes;
    for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
        const std::string extension = entry.path().extension().string();
        if (extension != ".h" && extension != ".cpp") continue;
        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);) {
            std::optional<Include> include = include_of(line);
            if (!include) continue;
            include->file = fs::relative(entry.path(), root).generic_string();
            includes.push_back(*std::move(include));
        }
    }
    return includes;
}

std::string room_of(const std::string& path) { return path.substr(0, path.find('/')); }

// clang-format off
/// The rooms from the bottom up; an include may only point to the same room or to one below.
const std::vector<std::string> rooms = {"automation", "ado", "dataaccess", "posting", "component", "host", "com"};

/// What one part of the tree may not include of another, although it stands above or beside it.
struct Wall {
    const char* from;
    const char* to;
    const char* why;
};
const Wall walls[] = {
    {"host/",           "com/",            "the shells do not know each other"},
    {"com/",            "host/",           "the shells do not know each other"},
    {"posting/stock/",  "posting/repair/", "a family shares through posting/, not through its neighbour"},
    {"posting/stock/",  "posting/goods/",  "a family shares through posting/, not through its neighbour"},
    {"posting/repair/", "posting/stock/",  "a family shares through posting/, not through its neighbour"},
    {"posting/repair/", "posting/goods/",  "a family shares through posting/, not through its neighbour"},
    {"posting/goods/",  "posting/stock/",  "a family shares through posting/, not through its neighbour"},
    {"posting/goods/",  "posting/repair/", "a family shares through posting/, not through its neighbour"},
    {"dataaccess/",     "ado/sqlite/",     "the core knows the port, not an adapter"},
    {"dataaccess/",     "ado/odbc/",       "the core knows the port, not an adapter"},
    {"posting/",        "ado/sqlite/",     "the core knows the port, not an adapter"},
    {"posting/",        "ado/odbc/",       "the core knows the port, not an adapter"},
    {"component/",      "ado/sqlite/",     "the core knows the port, not an adapter"},
    {"component/",      "ado/odbc/",       "the core knows the port, not an adapter"},
};

/// Where a platform's or an engine's header may be included; `prefix` is how the header's name begins.
struct Fence {
    const char* prefix;
    std::vector<std::string> allowed;
};
const Fence fences[] = {
    {"windows.h",    {"com/", "ado/com/"}},
    {"ole",          {"com/", "ado/com/"}},
    {"dispex.h",     {"com/"}},
    {"vantlo.h",     {"com/"}},
    {"sqlite3",      {"ado/sqlite/"}},
    {"sql.h",        {"ado/odbc/"}},
    {"sqlext.h",     {"ado/odbc/"}},
    {"sqlucode.h",   {"ado/odbc/"}},
    {"unistd.h",     {"host/"}},
    {"sys/",         {"host/"}},
};
// clang-format on

}  // namespace

TEST_CASE("Includes point down the rooms of the house, never up") {
    int seen = 0;
    for (std::size_t level = 0; level < rooms.size(); ++level) {
        if (!fs::exists(fs::path(VANTLO_SOURCE_DIR) / rooms[level])) continue;
        for (const Include& include : includes_below(rooms[level])) {
            const auto target = std::find(rooms.begin(), rooms.end(), room_of(include.target));
            if (include.system || target == rooms.end()) continue;
            ++seen;
            CHECK_MESSAGE(static_cast<std::size_t>(target - rooms.begin()) <= level,
                          include.file << " includes " << include.target);
            for (const Wall& wall : walls) {
                const bool climbs = include.file.starts_with(wall.from) && include.target.starts_with(wall.to);
                CHECK_MESSAGE(!climbs, include.file << " includes " << include.target << ": " << wall.why);
            }
        }
    }
    CHECK(seen > 50);
}

TEST_CASE("Headers of platforms and engines stay in the rooms that are made for them") {
    for (const std::string& room : rooms) {
        if (!fs::exists(fs::path(VANTLO_SOURCE_DIR) / room)) continue;
        for (const Include& include : includes_below(room)) {
            if (!include.system) continue;
            for (const Fence& fence : fences) {
                if (!include.target.starts_with(fence.prefix)) continue;
                const bool allowed = std::any_of(fence.allowed.begin(), fence.allowed.end(),
                                                 [&](const auto& place) { return include.file.starts_with(place); });
                CHECK_MESSAGE(allowed, include.file << " includes <" << include.target << ">");
            }
        }
    }
}
