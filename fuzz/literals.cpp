// Checks that any text becomes exactly one literal, which the engine reads back as the trimmed text.
//
// An input is a byte that chooses the function, then UTF-16 code units, low byte first; for a date number, its 8 bytes.

#include <cstdint>
#include <cstring>

#include "ado/sqlite/sqlite_connection.h"
#include "automation/error.h"
#include "dataaccess/shell_hooks.h"
#include "dataaccess/sql_literals.h"
#include "fuzz/require.h"

namespace {

using namespace vantlo;
using fuzz::require;

/// Text without the blanks at its ends, one at a time.
Text trimmed(Text text) {
    while (!text.empty() && text.front() == u' ') text.erase(0, 1);
    while (!text.empty() && text.back() == u' ') text.pop_back();
    return text;
}

/// What a LIKE pattern for the trimmed text is to be, one character at a time.
Text pattern_of(const Text& text) {
    Text pattern;
    for (const char16_t unit : trimmed(text)) {
        const bool special = unit == u'[' || unit == u'_' || unit == u'%';
        pattern += special ? Text{u'[', unit, u']'} : Text{unit};
    }
    return pattern;
}

SqliteConnection& engine() {
    static const Owned<SqliteConnection> connection = [] {
        Owned<SqliteConnection> made(new SqliteConnection(":memory:"));
        made->run_script("create table T (v text, guard text)");
        return made;
    }();
    return *connection;
}

bool is_one_row_of(const ResultTable& result, const Text& expected) {
    return result.rows.size() == 1 && result.rows[0].size() == 2 && result.rows[0][0] == Variant(expected) &&
           result.rows[0][1] == Variant(u"guard");
}

/// Sends the literal as postings send theirs, and reads back what the engine took it for.
void require_reads_back(const Text& literal, const Text& expected) {
    const std::string what = to_utf8(literal);
    if (literal.find(u'\0') != Text::npos || !is_well_formed(literal)) {
        try {
            engine().run(u"select " + literal);
        } catch (const Failure& failure) {
            require(failure.number() == error::bad_argument, "refused for another reason: " + what);
            return;
        }
        require(false, "no character, and not refused: " + what);
    }
    require(is_one_row_of(engine().run(u"select " + literal + u",'guard'"), expected), "select " + what);
    engine().run(u"insert into T(v,guard) values(" + literal + u",'guard')");
    require(is_one_row_of(engine().run(u"select * from T where v=" + literal), expected), "where v=" + what);
    require(is_one_row_of(engine().run(u"select * from T"), expected), "insert " + what);
    engine().run(u"delete from T");
}

/// A date's literal is empty, or digits and separators within the delimiters of the database kind.
void require_plain_date(const Variant& value, std::int16_t form) {
    for (const auto& [kind, delimiter] : {std::pair{DatabaseKind::sql_server, u'\''}, {DatabaseKind::access, u'#'}}) {
        project_state().database_kind = kind;
        const Text literal = Get_DateStr(value, form);
        if (literal.empty()) continue;
        const std::string what = to_utf8(literal);
        require(literal.size() >= 2 && literal.front() == delimiter && literal.back() == delimiter, what);
        const Text inner = literal.substr(1, literal.size() - 2);
        require(inner.size() >= 7 && inner.find_first_not_of(u"0123456789-: ") == Text::npos, what);
        if (kind == DatabaseKind::sql_server) require_reads_back(literal, inner);
    }
}

Text text_of(const std::uint8_t* bytes, std::size_t size) {
    Text text;
    for (std::size_t i = 0; i + 1 < size; i += 2) text += static_cast<char16_t>(bytes[i] | bytes[i + 1] << 8);
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0) return 0;
    const Text text = text_of(bytes + 1, size - 1);
    const auto form = static_cast<std::int16_t>(bytes[0] / 8 % 5);
    switch (bytes[0] % 8) {
        case 0: require_reads_back(GetSqlVal(text), trimmed(text)); break;
        case 1: require_reads_back(GetSqlVal(text, true), pattern_of(text)); break;
        case 2: {
            const Text literal = GetSqlVal(text, true, u"%", form == 0 ? u"Start" : form == 1 ? u"end" : u"BOTH");
            const Text head = u" like ";
            require(literal.starts_with(head), to_utf8(literal));
            const Text pattern = (form == 1 ? u"" : u"%") + pattern_of(text) + (form == 0 ? u"" : u"%");
            require_reads_back(literal.substr(head.size()), pattern);
            break;
        }
        case 3: require_reads_back(u"'" + to_text(Get_LikeStr(text)) + u"'", pattern_of(text)); break;
        case 4: require_plain_date(text, form); break;
        case 5: {
            Date date;
            if (size < 1 + sizeof date.days) break;
            std::memcpy(&date.days, bytes + 1, sizeof date.days);
            require_plain_date(date, form);
            break;
        }
        default: break;
    }
    return 0;
}
