// Checks that any file is either refused with its name, or read as bills whose values have the types of their columns. An
// input is a file.

#include <cstdint>

#include "fuzz/read_shop.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    vantlo::fuzz::require_read_or_refused({reinterpret_cast<const char*>(bytes), size});
    return 0;
}
