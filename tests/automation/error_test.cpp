#include "automation/error.h"

#include <doctest/doctest.h>

#include <cstdint>
#include <map>
#include <new>
#include <stdexcept>
#include <string>

#include "automation/error_text.h"
#include "tests/support/printing.h"

namespace vantlo {

namespace {

TEST_SUITE_BEGIN("[error]");

template <typename Exception>
ErrorNumber number_when_thrown(const Exception& exception) {
    try {
        throw exception;
    } catch (...) {
        return number_of_current_exception();
    }
}

TEST_CASE("number_of_current_exception knows a number for every exception, never 0") {
    CHECK(number_when_thrown(Failure(error::syntax_error)) == -2147217900);
    CHECK(number_when_thrown(Failure(3265, "no column Qty")) == 3265);
    CHECK(number_when_thrown(Failure(0)) == 440);
    CHECK(number_when_thrown(std::bad_alloc()) == 7);
    CHECK(number_when_thrown(std::bad_array_new_length()) == 7);
    CHECK(number_when_thrown(std::runtime_error("anything")) == 440);
    CHECK(number_when_thrown(42) == 440);
}

TEST_CASE("Failure carries the adapter's own account") {
    CHECK(std::string(Failure(3265, "no column Qty").what()) == "no column Qty");
    CHECK(std::string(Failure(3265).what()).empty());
}

TEST_CASE("The names of database errors stand for the codes that ADO reports") {
    const auto code = [](ErrorNumber number) { return static_cast<std::uint32_t>(number); };
    CHECK(code(error::syntax_error) == 0x80040E14);
    CHECK(code(error::no_such_table) == 0x80040E37);
    CHECK(code(error::constraint_violated) == 0x80040E2F);
    CHECK(code(error::value_does_not_fit) == 0x80040E57);
    CHECK(code(error::permission_denied) == 0x80040E09);
    CHECK(code(error::login_failed) == 0x80040E4D);
    CHECK(code(error::time_out) == 0x80040E31);
    CHECK(code(error::locked_by_another) == 0x80040E38);
    CHECK(code(error::no_such_column) == 0x80040E10);
    CHECK(code(error::cannot_convert_value) == 0x80040E07);
    CHECK(code(error::unspecified) == 0x80004005);
}

TEST_CASE("standard_text says in Chinese what an error number means") {
    CHECK(TextView(standard_text(13)) == u"数据类型不匹配。");
    CHECK(TextView(standard_text(94)) == u"此处不能使用空值。");
    CHECK(TextView(standard_text(3709)) == u"没有可用的数据库连接。");
    CHECK(TextView(standard_text(error::syntax_error)) == u"数据库语句有错误。");
    CHECK(TextView(standard_text(13, Language::english)) == u"The types of the data do not match.");
}

// Every number with a text of its own.
constexpr ErrorNumber listed[] = {
    5, 6, 7, 9, 10, 11, 13, 14, 16, 18, 28, 35, 48, 49, 51, 52, 53, 54, 55, 57, 58, 61, 62, 67, 68, 70, 71, 75, 76, 91,
    92, 93, 94, 97, 321, 322, 328, 335, 336, 337, 338, 380, 381, 382, 383, 385, 387, 393, 394, 419, 422, 423, 424, 425,
    429, 430, 432, 438, 440, 442, 443, 445, 446, 447, 448, 449, 450, 451, 452, 453, 454, 455, 457, 458, 459, 460, 462,
    463, 3000, 3001, 3002, 3003, 3004, 3021, 3219, 3246, 3251, 3265, 3367, 3420, 3421, 3704, 3705, 3706, 3707, 3708,
    3709, 3710, 3711, 3712, 3713, 3714, 3715, 3716, 3719, 3720, 3721, 3722, 3723, 3724, 3725, 3726, 3727, 3728, 3729,
    3730, 3731, 3732, 3733, 3734, 3735, 3736, 3737, 3738, 3747, 3748, 3749, 3750, 3751,
    // 0x80040E..: databases
    -2147217900, -2147217865, -2147217873, -2147217833, -2147217911, -2147217843, -2147217871, -2147217864, -2147217913,
    -2147217904, -2147217887, -2147217842,
    // 0x8000...., 0x8001...., 0x8002...., 0x8004...., 0x8007....: COM and Windows
    -2147467263, -2147467262, -2147467261, -2147467260, -2147467259, -2147418113, -2147417848, -2147352573, -2147352572,
    -2147352571, -2147352570, -2147352566, -2147352562, -2147221164, -2147024891, -2147024882, -2147024809,
    -2147023174};

TEST_CASE("standard_text has one text per number in each language") {
    const TextView general_chinese = standard_text(1);
    const TextView general_english = standard_text(1, Language::english);
    std::map<TextView, ErrorNumber> chinese, english;
    for (const ErrorNumber number : listed) {
        CAPTURE(number);
        const TextView in_chinese = standard_text(number);
        const TextView in_english = standard_text(number, Language::english);
        CHECK(in_chinese != general_chinese);
        CHECK(in_english != general_english);
        CHECK_MESSAGE(chinese.emplace(in_chinese, number).second, "the Chinese text also serves ", chinese[in_chinese]);
        CHECK_MESSAGE(english.emplace(in_english, number).second, "the English text also serves ", english[in_english]);
        CHECK(in_chinese.back() == u'。');
        CHECK(in_english.back() == u'.');
        CHECK(in_english.find_first_of(u"，。；") == TextView::npos);
    }
}

TEST_CASE("standard_text has a general text for every other number") {
    const TextView chinese = u"发生错误，操作没有完成，请与系统管理员联系。";
    const TextView english =
        u"An error occurred and the operation was not completed; please tell the system's administrator.";
    for (const ErrorNumber number : {0, 1, -1, 4, 12, 95, 3752, 9999, INT32_MAX, INT32_MIN, -2147217899}) {
        CAPTURE(number);
        CHECK(TextView(standard_text(number)) == chinese);
        CHECK(TextView(standard_text(number, Language::english)) == english);
    }
}

TEST_CASE("standard_text can be asked where nothing may throw") { CHECK(noexcept(standard_text(5))); }

TEST_SUITE_END();

}  // namespace

}  // namespace vantlo
