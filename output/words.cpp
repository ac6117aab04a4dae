#include "output/words.h"

#include <cstdlib>

namespace vantlo {

Language language_of_locale() {
    for (const char* const name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* const locale = std::getenv(name);
        if (locale == nullptr || *locale == '\0') continue;
        return std::string_view(locale).starts_with("zh") ? Language::chinese : Language::english;
    }
    return Language::english;
}

}  // namespace vantlo
