#include "dataaccess/failure_message.h"

#include <array>
#include <cstddef>

#include "automation/error_text.h"
#include "dataaccess/shell_hooks.h"

namespace vantlo {

namespace {

constexpr const char16_t* message_title = u"提示信息";  // "information"
constexpr std::int32_t information_icon = 64;           // with an OK button alone

/// A NUL-terminated text of bounded length on the stack; what does not fit is cut.
class StackText {
public:
    void append(const char16_t* text) {
        for (; *text != 0 && length_ + 1 < units_.size(); ++text) units_[length_++] = *text;
    }
    [[nodiscard]] const char16_t* c_str() const { return units_.data(); }

private:
    std::array<char16_t, 256> units_{};
    std::size_t length_ = 0;
};

}  // namespace

void show_failure(const char16_t* routine, ErrorNumber number) noexcept {
    StackText text;
    text.append(routine);
    text.append(u"():");
    text.append(standard_text(number));
    shell_hooks().show_message(text.c_str(), message_title, information_icon);
}

}  // namespace vantlo
