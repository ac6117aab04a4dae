#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "import/shop_reader.h"

namespace vantlo::fuzz {

/// A file in memory, under a name that can be opened.
class MemoryFile {
public:
    explicit MemoryFile(std::string_view bytes) : descriptor_(::memfd_create("bills", 0)) {
        require(
            descriptor_ >= 0 && ::write(descriptor_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()),
            "no memory file");
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { ::close(descriptor_); }

    [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    int descriptor_;
};

inline void require_plain(const Record& record) {
    for (const auto& field : record.fields()) {
        const std::string column = to_utf8(field.column);
        const Variant& value = field.value;
        if (const Text* text = value.get_if<Text>()) require(is_well_formed(*text), column + " has half a pair");
        if (const float* number = value.get_if<float>()) require(std::isfinite(*number), column + " is infinite");
        require(
            value.is<Text>() || value.is<float>() || value.is<std::int32_t>() || value.is<Date>() || value.is<Null>(),
            column + " has a type of its own");
    }
}

/// Requires that a file is either refused with its name, or read as bills whose values have the types of their columns.
inline void require_read_or_refused(std::string_view bytes, const FileOptions& options = {}) {
    const MemoryFile file(bytes);
    ShopReader reader(Language::english);
    reader.read(file.path(), options);
    if (!reader.errors().empty()) {
        require(reader.errors().text().starts_with(file.path()), "a refusal that does not name the file");
        return;
    }
    for (const MasterRow& row : reader.shop().master) require_plain(row.values);
    for (const Bill& bill : reader.shop().bills) {
        require(bill.kind != nullptr && !trim_blanks(bill.id).empty(), "a bill without a kind or an id");
        require_plain(bill.header);
        for (const Record& line : bill.lines) require_plain(line);
    }
}

}  // namespace vantlo::fuzz
