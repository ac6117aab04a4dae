#include <doctest/doctest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

// The pages for users exist in English and Chinese. Section by section, both name the same code, links and rows of tables, and
// their blocks hold the same commands and files, so that a change of one alone fails here. What transcripts print is
// compared with the program in tests/tool. What is said beside that is held by tests/tree/translated_sections.txt: a digest of
// each English section at the time when its Chinese was last brought up to date.

namespace {

namespace fs = std::filesystem;

const fs::path tree = VANTLO_SOURCE_DIR;

struct Page {
    std::string english;
    std::string chinese;
};

// docs/performance.md, databases.md, scaling.md and reliability.md are for whoever runs servers and judges the system.
const Page pages[] = {
    {"README.md", "README.zh.md"},
    {"docs/adopting.md", "docs/adopting.zh.md"},
    {"docs/hosts.md", "docs/hosts.zh.md"},
    {"docs/import.md", "docs/import.zh.md"},
    {"docs/journal.md", "docs/journal.zh.md"},
    {"docs/questions.md", "docs/questions.zh.md"},
    {"docs/tool.md", "docs/tool.zh.md"},
    {"docs/verify.md", "docs/verify.zh.md"},
};

/// What of a section does not depend on the language.
struct Section {
    std::string heading;
    std::size_t depth = 0;
    std::set<std::string> code;       ///< between backticks, with single blanks
    std::set<std::string> links;      ///< targets; those of translated pages by their English names
    std::size_t rows = 0;             ///< of tables
    std::string text;                 ///< all of it, with single blanks
    std::vector<std::string> blocks;  ///< lines of fenced and indented blocks, as in line_of_block
};

std::string read(const std::string& name) {
    std::ifstream file(tree / name);
    REQUIRE_MESSAGE(file, name);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string with_single_blanks(const std::string& text) { return std::regex_replace(text, std::regex("\\s+"), " "); }

/// A line of a block that both languages have. In a transcript these are the commands, not what they print. Elsewhere
/// what stands behind two blanks or more explains a command, and lines that begin with so many blanks go on with that.
std::string line_of_block(const std::string& line, bool is_transcript) {
    if (is_transcript) return line.starts_with("$ ") ? line : "";
    if (line.starts_with("        ")) return "";
    const std::size_t explanation = line.find("  ", line.find_first_not_of(' '));
    return line.substr(0, explanation);
}

std::string english_name(std::string target) {
    for (const Page& page : pages) {
        const std::string name = fs::path(page.chinese).filename();
        const std::size_t found = target.find(name);
        if (found != std::string::npos) return target.replace(found, name.size(), fs::path(page.english).filename());
    }
    return target;
}

void add_matches(std::set<std::string>& found, const std::string& text, const char* pattern,
                 std::string (*name)(std::string)) {
    const std::regex expression(pattern);
    for (auto it = std::sregex_iterator(text.begin(), text.end(), expression); it != std::sregex_iterator(); ++it)
        found.insert(name(with_single_blanks((*it)[1])));
}

/// The sections of a page. The link to the page's other language, on its third line, belongs to none.
std::vector<Section> sections_of(const std::string& page) {
    std::vector<Section> sections;
    std::string prose, whole;
    const auto end_section = [&] {
        const std::string text = with_single_blanks(std::exchange(whole, {}));
        if (sections.empty()) return;
        add_matches(sections.back().code, prose, "`([^`]+)`", [](std::string code) { return code; });
        add_matches(sections.back().links, prose, "\\]\\(([^)#][^)]*)\\)", english_name);
        sections.back().text = text;
        prose.clear();
    };
    std::istringstream lines(page);
    std::vector<std::string> block;
    bool is_inside = false;
    std::size_t number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (line.starts_with('#') && !is_inside) end_section();
        whole += line + "\n";
        if (line.starts_with("```")) {
            is_inside = !is_inside;
            if (is_inside) continue;
            const bool is_transcript =
                std::ranges::any_of(block, [](const std::string& text) { return text.starts_with("$ "); });
            for (const std::string& text : block) {
                const std::string common = line_of_block(text, is_transcript);
                if (!common.empty()) sections.back().blocks.push_back(common);
            }
            block.clear();
        } else if (is_inside) {
            block.push_back(line);
        } else if (line.starts_with('#')) {
            Section& section = sections.emplace_back();
            section.heading = line;
            section.depth = line.find(' ');
        } else if (line.starts_with("    ")) {
            if (const std::string common = line_of_block(line, false); !common.empty())
                sections.back().blocks.push_back(common);
        } else if (number != 3) {
            sections.back().rows += line.starts_with('|');
            prose += line + "\n";
        }
    }
    end_section();
    return sections;
}

/// What one of two lists has and the other lacks, for people.
template <typename List>
std::string difference(const List& english, const List& chinese) {
    std::string text;
    const auto add = [&](const List& has, const List& lacks, const char* which) {
        for (const std::string& item : has) {
            if (std::ranges::count(has, item) > std::ranges::count(lacks, item))
                text += std::string(which) + item + "\n";
        }
    };
    add(english, chinese, "English alone: ");
    add(chinese, english, "Chinese alone: ");
    return text;
}

TEST_CASE("Every translated page has the sections, code, links, tables and commands of the English one") {
    for (const Page& page : pages) {
        const std::vector<Section> english = sections_of(read(page.english));
        const std::vector<Section> chinese = sections_of(read(page.chinese));
        CAPTURE(page.chinese);
        REQUIRE(english.size() == chinese.size());
        REQUIRE(!english.empty());
        for (std::size_t i = 0; i < english.size(); ++i) {
            CAPTURE(english[i].heading);
            CHECK(chinese[i].depth == english[i].depth);
            CHECK(chinese[i].rows == english[i].rows);
            CHECK_MESSAGE(chinese[i].code == english[i].code, difference(english[i].code, chinese[i].code));
            CHECK_MESSAGE(chinese[i].links == english[i].links, difference(english[i].links, chinese[i].links));
            CHECK_MESSAGE(chinese[i].blocks == english[i].blocks, difference(english[i].blocks, chinese[i].blocks));
        }
    }
}

/// FNV-1a, 64 bits, as hexadecimal digits.
std::string digest(const std::string& text) {
    std::uint64_t hash = 14695981039346656037U;
    for (const char byte : text) hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    std::ostringstream digits;
    digits << std::hex << std::setw(16) << std::setfill('0') << hash;
    return digits.str();
}

TEST_CASE("Every section of an English page is as it was when its Chinese was last brought up to date") {
    const std::string translated = read("tests/tree/translated_sections.txt");
    std::string now;
    for (const Page& page : pages) {
        std::size_t number = 0;
        for (const Section& section : sections_of(read(page.english))) {
            const std::string line = page.english + " " + std::to_string(++number) + " " + digest(section.text) + "\n";
            CHECK_MESSAGE(translated.find(line) != std::string::npos, page.english, ", \"", section.heading,
                          "\" has changed: bring ", page.chinese,
                          " up to date, then its line in tests/tree/translated_sections.txt is\n", line);
            now += line;
        }
    }
    CHECK(std::ranges::count(translated, '\n') == std::ranges::count(now, '\n'));
}

/// Whether a page has the heading to which a link within it leads: in small letters, blanks as minus signs.
bool has_heading(const std::string& page, const std::string& anchor) {
    for (const Section& section : sections_of(page)) {
        std::string name = section.heading.substr(section.depth + 1);
        for (char& letter : name) letter = letter == ' ' ? '-' : static_cast<char>(std::tolower(letter));
        if ("#" + name == anchor) return true;
    }
    return false;
}

TEST_CASE("Each of the two pages links the other one at its top, and every link of both leads somewhere") {
    for (const Page& page : pages) {
        for (const auto& [name, other, label] :
             {std::tuple(page.english, page.chinese, "中文"), std::tuple(page.chinese, page.english, "English")}) {
            const std::string text = read(name);
            const std::string link =
                "\n\n[" + std::string(label) + "](" + fs::path(other).filename().string() + ")\n\n";
            CHECK_MESSAGE(text.find(link) == text.find('\n'), name);
            static const std::regex target("\\]\\(([^)#]*)(#[^)]*)?\\)");
            for (auto it = std::sregex_iterator(text.begin(), text.end(), target); it != std::sregex_iterator(); ++it) {
                if ((*it)[1].str().find("://") != std::string::npos) continue;
                if ((*it)[1].length() == 0) {
                    CHECK_MESSAGE(has_heading(text, (*it)[2]), name, ": ", (*it)[2].str());
                    continue;
                }
                CHECK_MESSAGE(fs::exists((tree / name).parent_path() / (*it)[1].str()), name, ": ", (*it)[1].str());
            }
        }
    }
}

TEST_CASE("A page in Chinese leads to the pages that are in Chinese") {
    for (const Page& page : pages) {
        for (const Section& section : sections_of(read(page.chinese))) CHECK(section.depth > 0);
        const std::string text = read(page.chinese);
        for (const Page& other : pages) {
            const std::string link =
                "](" + fs::relative(other.english, fs::path(page.chinese).parent_path()).string() + ")";
            const std::size_t found = text.find(link, text.find("\n\n", text.find("English")));
            CHECK_MESSAGE(found == std::string::npos, page.chinese, ": ", link);
        }
    }
}

}  // namespace
