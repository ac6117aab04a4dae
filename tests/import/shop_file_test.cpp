#include "import/shop_file.h"

#include <doctest/doctest.h>

#include <fstream>

#include "tests/support/printing.h"
#include "tests/support/temporary_folder.h"

namespace vantlo::test {
namespace {

ShopFile read(const std::string& content) {
    const TemporaryFolder folder;
    const std::string path = folder.file("shop.json");
    std::ofstream(path) << content;
    return read_shop_file(path, Language::english);
}

/// Why a file is refused; empty if it is not.
std::string refusal_of(const std::string& content) {
    try {
        read(content);
    } catch (const TaskError& refusal) {
        CHECK(refusal.reason() == Reason::bad_input);
        return refusal.what();
    }
    return {};
}

TEST_CASE("A number that its column's type does not hold is refused, not cut") {
    const auto unit = [](const std::string& factor) {
        return R"({"units": [{"goods": "G1", "unit": "box", "factor": )" + factor + "}]}";
    };
    CHECK(refusal_of(unit("3.4e38")).empty());
    CHECK(refusal_of(unit("1e999")).find("1e999") != std::string::npos);
    CHECK(refusal_of(unit("-1e300")).find("factor: -1e300 is too large") != std::string::npos);
    const auto goods = [](const std::string& flag) {
        return R"({"goods": [{"id": "G1", "main_goods": )" + flag + "}]}";
    };
    CHECK(read(goods("-32768")).master[0].values.value(u"GCZYCPFlag") == Variant(std::int32_t{-32768}));
    for (const char* const number : {"-32769", "4294967297", "-2147483649", "18446744073709551615"}) {
        CAPTURE(number);
        CHECK(refusal_of(goods(number)).find("is outside -32768 to 32767") != std::string::npos);
    }
}

TEST_CASE("A value nested without end is refused") {
    const std::string nested = std::string(200'000, '[') + std::string(200'000, ']');
    for (const std::string& content :
         {R"({"bills": [{"id": "B1", "kind": )" + nested + "}]}", R"({"goods": )" + nested + "}",
          R"({"goods": [{"id": )" + nested + "}]}", R"({"units": [{"factor": )" + nested + "}]}"}) {
        CHECK(refusal_of(content).find("this is nested too deeply") != std::string::npos);
    }
}

}  // namespace
}  // namespace vantlo::test
