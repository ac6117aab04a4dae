#include "output/sql_comment.h"

namespace vantlo {

std::string sql_comment(const std::string& text) {
    std::string comment = "-- ";
    for (const char character : text) {
        const bool ends_line = character == '\n' || character == '\r' || character == '\f' || character == '\v';
        comment += ends_line ? std::string("\n-- ") : std::string(1, character);
    }
    return comment + '\n';
}

}  // namespace vantlo
