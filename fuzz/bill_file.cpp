// Checks that any file is either refused with its name, or read as bills whose values have the types of their columns. An
// input is a file.

#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <string>

#include "fuzz/require.h"
#include "import/shop_file.h"

namespace {

using namespace vantlo;
using fuzz::require;

/// A file in memory, under a name that can be opened.
class MemoryFile {
public:
    MemoryFile(const std::uint8_t* bytes, std::size_t size) : descriptor_(::memfd_create("bills", 0)) {
        require(descriptor_ >= 0 && ::write(descriptor_, bytes, size) == static_cast<ssize_t>(size), "no memory file");
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { ::close(descriptor_); }

    [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    int descriptor_;
};

void require_plain(const Record& record) {
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const MemoryFile file(bytes, size);
    try {
        const ShopFile shop = read_shop_file(file.path(), Language::english);
        for (const MasterRow& row : shop.master) require_plain(row.values);
        for (const Bill& bill : shop.bills) {
            require(bill.kind != nullptr && !trim_blanks(bill.id).empty(), "a bill without a kind or an id");
            require_plain(bill.header);
            for (const Record& line : bill.lines) require_plain(line);
        }
    } catch (const TaskError& refusal) {
        require(refusal.reason() == Reason::bad_input, "a refusal for another reason");
        require(std::string(refusal.what()).starts_with(file.path()), "a refusal that does not name the file");
    }
    return 0;
}
