#include "bookkeeping/identifiers.h"

namespace vantlo {

Text quoted_identifier(std::string_view name, const Dialect& dialect) {
    const char16_t quote = dialect.identifier_quote;
    return Text(1, quote) + replace_all(from_utf8(name), quote, Text(2, quote)) + quote;
}

}  // namespace vantlo
