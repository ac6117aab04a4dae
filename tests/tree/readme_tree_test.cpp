#include <doctest/doctest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// The lines of README's section "The tree" that name a folder.
std::vector<std::string> lines_of_readme_tree() {
    std::ifstream readme(VANTLO_SOURCE_DIR "/README.md");
    std::vector<std::string> lines;
    bool is_tree = false;
    for (std::string line; std::getline(readme, line);) {
        if (line.starts_with("## ")) is_tree = line == "## The tree";
        if (is_tree && line.starts_with("    ")) lines.push_back(line.substr(4));
    }
    return lines;
}

/// The folders of the tree, without hidden ones and those that a build makes.
std::set<std::string> folders_of_tree() {
    std::set<std::string> folders;
    for (const fs::directory_entry& entry : fs::directory_iterator(VANTLO_SOURCE_DIR)) {
        const std::string name = entry.path().filename().string();
        if (entry.is_directory() && !name.starts_with("build") && !name.starts_with(".")) folders.insert(name + "/");
    }
    return folders;
}

/// The words of a line that name a folder: those that end with a slash.
std::vector<std::string> folders_named_in(const std::string& line) {
    std::vector<std::string> named;
    std::istringstream words(line);
    for (std::string word; words >> word;) {
        if (word.ends_with('/')) named.push_back(word);
    }
    return named;
}

}  // namespace

TEST_CASE("README's tree is the tree: each folder stands there once, and no other") {
    std::multiset<std::string> told;
    for (const std::string& line : lines_of_readme_tree()) told.insert(line.substr(0, line.find(' ')));
    const std::set<std::string> folders = folders_of_tree();
    CHECK(folders.size() > 15);
    for (const std::string& folder : folders) CHECK_MESSAGE(told.count(folder) == 1, folder);
    for (const std::string& folder : told) CHECK_MESSAGE(folders.contains(folder), folder);
}

TEST_CASE("A folder that README's tree tells of within another is there") {
    for (const std::string& line : lines_of_readme_tree()) {
        for (const std::string& folder : folders_named_in(line)) {
            const std::string room = line.substr(0, line.find(' '));
            const bool is_there = fs::is_directory(fs::path(VANTLO_SOURCE_DIR) / folder) ||
                                  fs::is_directory(fs::path(VANTLO_SOURCE_DIR) / room / folder);
            CHECK_MESSAGE(is_there, line);
        }
    }
}
