#pragma once

#include <string_view>

namespace vantlo {

/// A file that is built into the program.
struct Asset {
    const char* begin;
    const char* end;

    [[nodiscard]] std::string_view text() const { return {begin, end}; }
};

// What a page is made of: its template, its looks and what it does, the libraries that it uses, and their notices.
extern const Asset page_template, page_style, page_script, jquery_script, datatables_script, chart_script;
extern const Asset jquery_notice, datatables_notice, chart_notice;

}  // namespace vantlo
