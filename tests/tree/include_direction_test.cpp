#include <doctest/doctest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
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

bool is_code(const fs::path& path) {
    const std::string extension = path.extension().string();
    return extension == ".h" || extension == ".cpp" || extension == ".c";
}

/// The files of code in the tree, but for the tests, which may include everything.
std::vector<fs::path> files_of_tree() {
    std::vector<fs::path> files;
    for (auto entry = fs::recursive_directory_iterator(VANTLO_SOURCE_DIR); entry != fs::recursive_directory_iterator();
         ++entry) {
        const std::string name = entry->path().filename().string();
        const bool is_left_out = name == "tests" || name.starts_with("build") || name.starts_with(".");
        if (entry->is_directory() && is_left_out) entry.disable_recursion_pending();
        if (entry->is_regular_file() && is_code(entry->path())) files.push_back(entry->path());
    }
    return files;
}

std::vector<Include> includes_of_tree() {
    std::vector<Include> includes;
    for (const fs::path& path : files_of_tree()) {
        std::ifstream file(path);
        for (std::string line; std::getline(file, line);) {
            std::optional<Include> include = include_of(line);
            if (!include) continue;
            include->file = fs::relative(path, VANTLO_SOURCE_DIR).generic_string();
            includes.push_back(*std::move(include));
        }
    }
    return includes;
}

long line_count(const fs::path& path) {
    std::ifstream file(path);
    return std::count(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>(), '\n');
}

std::string room_of(const std::string& path) { return path.substr(0, path.find('/')); }

std::string folder_of(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash);
}

// clang-format off
/// The folders from the bottom up, those on one line side by side. An include may only point to its own folder or to one
/// on a line below: neither up, nor to a neighbour.
const std::vector<std::vector<std::string>> levels = {
    {"automation"},
    {"ado"},
    {"ado/native", "ado/com"},
    {"ado/sqlite", "ado/odbc"},
    {"dataaccess"},
    {"posting"},
    {"posting/stock", "posting/repair", "posting/goods"},
    {"component"},
    {"bills", "com"},
    {"bookkeeping"},
    {"audit", "import", "reports"},
    {"output"},
    {"tool/page"},
    {"tool/commands"},
    {"tool"},
    {"examples/library"},
    {"support"},
    {"bench", "fuzz"},
};

/// What a folder may not include although it stands below.
struct Wall {
    const char* from;
    const char* to;
    const char* why;
};
const Wall walls[] = {
    {"com/",         "ado/native/", "the server works on the host's ADO alone"},
    {"com/",         "ado/sqlite/", "the server works on the host's ADO alone"},
    {"com/",         "ado/odbc/",   "the server works on the host's ADO alone"},
    {"dataaccess/",  "ado/native/", "the core knows the port, not an adapter"},
    {"dataaccess/",  "ado/sqlite/", "the core knows the port, not an adapter"},
    {"dataaccess/",  "ado/odbc/",   "the core knows the port, not an adapter"},
    {"dataaccess/",  "ado/com/",    "the core knows the port, not an adapter"},
    {"posting/",     "ado/native/", "the core knows the port, not an adapter"},
    {"posting/",     "ado/sqlite/", "the core knows the port, not an adapter"},
    {"posting/",     "ado/odbc/",   "the core knows the port, not an adapter"},
    {"posting/",     "ado/com/",    "the core knows the port, not an adapter"},
    {"component/",   "ado/native/", "the core knows the port, not an adapter"},
    {"component/",   "ado/sqlite/", "the core knows the port, not an adapter"},
    {"component/",   "ado/odbc/",   "the core knows the port, not an adapter"},
    {"component/",   "ado/com/",    "the core knows the port, not an adapter"},
    {"bills/",       "ado/native/", "what a bill is knows no engine"},
    {"bills/",       "ado/sqlite/", "what a bill is knows no engine"},
    {"bills/",       "ado/odbc/",   "what a bill is knows no engine"},
    {"bills/",       "component/",  "what a bill is can be read without posting it"},
    {"import/",      "bookkeeping/", "files become bills without a database"},
    {"import/",      "ado/native/", "files become bills without a database"},
    {"import/",      "ado/sqlite/", "files become bills without a database"},
    {"import/",      "ado/odbc/",   "files become bills without a database"},
    {"bookkeeping/", "ado/sqlite/", "connections are opened by ado/native/"},
    {"bookkeeping/", "ado/odbc/",   "connections are opened by ado/native/"},
    {"audit/",       "ado/sqlite/", "connections are opened by ado/native/"},
    {"audit/",       "ado/odbc/",   "connections are opened by ado/native/"},
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
    {"corvane.h",    {"com/"}},
    {"sqlite3",      {"ado/sqlite/"}},
    {"sql.h",        {"ado/odbc/"}},
    {"sqlext.h",     {"ado/odbc/"}},
    {"sqlucode.h",   {"ado/odbc/"}},
    {"unistd.h",     {"output/", "tool/"}},
    {"fcntl.h",      {"output/", "tool/"}},
    {"sys/",         {"output/", "tool/"}},
};
// clang-format on

/// How high a folder stands; nothing for one that has no code of the house.
std::optional<std::size_t> level_of(const std::string& folder) {
    const auto level = std::ranges::find_if(
        levels, [&](const std::vector<std::string>& line) { return std::ranges::count(line, folder) > 0; });
    if (level == levels.end()) return std::nullopt;
    return static_cast<std::size_t>(level - levels.begin());
}

bool is_product(const std::string& file) {
    static const std::vector<std::string> others = {"bench", "fuzz", "examples", "support"};
    return std::ranges::count(others, room_of(file)) == 0;
}

}  // namespace

TEST_CASE("Every folder with code has its place in the house") {
    for (const Include& include : includes_of_tree()) {
        CHECK_MESSAGE(level_of(folder_of(include.file)), include.file << " stands in a folder without a level");
    }
}

TEST_CASE("Includes point down the rooms and folders of the house, never up and never aside") {
    int seen = 0;
    for (const Include& include : includes_of_tree()) {
        if (include.system) continue;
        CHECK_MESSAGE(!include.target.starts_with("tests/"), include.file << " includes " << include.target);
        const std::string from = folder_of(include.file);
        const std::string to = folder_of(include.target);
        const std::optional<std::size_t> target_level = level_of(to);
        if (!target_level || from == to) continue;
        ++seen;
        CHECK_MESSAGE(*target_level < level_of(from), include.file << " includes " << include.target);
        for (const Wall& wall : walls) {
            const bool climbs = include.file.starts_with(wall.from) && include.target.starts_with(wall.to);
            CHECK_MESSAGE(!climbs, include.file << " includes " << include.target << ": " << wall.why);
        }
    }
    CHECK(seen > 200);
}

TEST_CASE("Headers of platforms and engines stay in the rooms that are made for them") {
    for (const Include& include : includes_of_tree()) {
        if (!include.system || !is_product(include.file)) continue;
        for (const Fence& fence : fences) {
            if (!include.target.starts_with(fence.prefix)) continue;
            const bool allowed = std::ranges::any_of(
                fence.allowed, [&](const std::string& place) { return include.file.starts_with(place); });
            CHECK_MESSAGE(allowed, include.file << " includes <" << include.target << ">");
        }
    }
}

TEST_CASE("No product room holds more than a quarter of the product's lines") {
    std::map<std::string, long> lines_of;
    long all_lines = 0;
    for (const fs::path& file : files_of_tree()) {
        const std::string name = fs::relative(file, VANTLO_SOURCE_DIR).generic_string();
        if (!is_product(name)) continue;
        const long lines = line_count(file);
        lines_of[room_of(name)] += lines;
        all_lines += lines;
    }
    REQUIRE(lines_of.size() > 9);
    for (const auto& [room, lines] : lines_of)
        CHECK_MESSAGE(lines * 4 <= all_lines, room << " has " << lines << " of " << all_lines);
}
