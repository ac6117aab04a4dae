// Checks that any table is either refused with its name, or read as bills or goods whose values have the types of their
// columns. An input is a CSV file; or, if its first line begins with `part `, the parts of a workbook, each behind a line
// `part NAME`: they are made an archive here, so that what is mutated is what the parts say, not the archive's checksums.

#include <cstdint>

#include "fuzz/read_shop.h"
#include "support/workbook_file.h"

namespace {

constexpr std::string_view mark = "part ";

vantlo::test::Parts parts_in(std::string_view input) {
    vantlo::test::Parts parts;
    for (std::size_t start = 0; start < input.size();) {
        const std::string_view line = input.substr(start, input.find('\n', start) - start);
        start += line.size() + 1;
        if (line.starts_with(mark)) {
            parts.emplace_back(line.substr(mark.size()), "");
        } else {
            parts.back().second += std::string(line) + "\n";
        }
    }
    return parts;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(bytes), size);
    vantlo::FileOptions options{.format = vantlo::FileFormat::csv, .table = "goods"};
    if (!input.starts_with(mark)) {
        vantlo::fuzz::require_read_or_refused(input, options);
        return 0;
    }
    std::string archive;
    try {
        archive = vantlo::test::archive_of(parts_in(input));
    } catch (const std::runtime_error&) {
        return 0;  // names that no archive can have, such as one twice
    }
    options.format = vantlo::FileFormat::workbook;
    vantlo::fuzz::require_read_or_refused(archive, options);
    return 0;
}
