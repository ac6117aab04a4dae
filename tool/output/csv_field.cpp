#include "tool/output/csv_field.h"

namespace vantlo {

std::string csv_field(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string field = "\"";
    for (const char character : text) field += character == '"' ? "\"\"" : std::string(1, character);
    return field + "\"";
}

}  // namespace vantlo
