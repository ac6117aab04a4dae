#include <doctest/doctest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// One `#include` line of the tree.
struct Include {
    std::string file;    ///< relative to the tree's root
    std::string target;  ///< as written between the brackets or quotes
    bool system = false;
};

std::vector<Include> includes_below(const std::string& folder) {
    static const std::regex line_form(R"(^\s*#\s*include\s*([<"])([^>"]+)[>"].*$)");
    const fs::path root = VANTLO_SOURCE_DIR;
    std::vector<Include> includes;
    for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
        const std::string extension = entry.path().extension().string();
        if (extension != ".h" && extension != ".cpp") continue;
        std::ifstream file(entry.path());
        for (std::string line; std::getline(file, line);) {
            std::smatch match;
            if (!std::regex_match(line, match, line_form)) continue;
            includes.push_back({fs::relative(entry.path(), root).generic_string(), match[2], match[1] == "<"});
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
