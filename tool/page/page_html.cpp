#include <fmt/format.h>

#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <span>
#include <sstream>
#include <tuple>

#include "automation/calendar.h"
#include "output/card_text.h"
#include "output/list_output.h"
#include "output/visible.h"
#include "tool/page/assets.h"
#include "tool/page/html_text.h"
#include "tool/page/page_words.h"
#include "tool/page/stock_page.h"

namespace vantlo {

namespace {

constexpr std::size_t most_rows_of_attention = 25;
constexpr std::size_t most_report_lines = 300;

// What has happened to a movement, as the script knows it.
constexpr int of_a_bill = 0, without_bill = 1, while_journal_was_off = 2;

bool is_negative(const StockRow& row) {
    const Currency* const on_hand = row.on_hand.get_if<Currency>();
    return on_hand != nullptr && *on_hand < Currency();
}

/// Seconds of the local calendar and clock since 1970-01-01 00:00:00.
std::int64_t seconds_of(Date date) {
    constexpr double days_to_1970 = 25569;
    return std::llround((date.days - days_to_1970) * 86400);
}

/// A quantity as JSON: a number, or a text where browsers' numbers would lose digits.
std::string json_quantity(Currency quantity) {
    constexpr std::size_t exact_digits = 15;
    const std::string text = quantity_text(quantity);
    return text.size() > exact_digits ? '"' + text + '"' : text;
}

/// What the ledger has for a quantity: that, null for none, or the text of what stands there instead.
std::string json_cell(const Variant& cell) {
    if (const Currency* const quantity = cell.get_if<Currency>()) return json_quantity(*quantity);
    return cell.is<Null>() ? "null" : nlohmann::json(visible(cell_text(cell))).dump();
}

std::string json_list(const std::vector<std::string>& items) { return fmt::format("[{}]", fmt::join(items, ",")); }

/// The texts of a page's data, each once; rows have their places.
class Strings {
public:
    Strings() { place_of(""); }

    std::string place_of(const std::string& text) {
        const auto [known, is_new] = places_.emplace(text, places_.size());
        if (is_new) json_.push_back(nlohmann::json(visible(text)).dump());
        return std::to_string(known->second);
    }
    std::string place_of(const Text& text) { return place_of(to_utf8(text)); }

    [[nodiscard]] std::string json() const { return json_list(json_); }

private:
    std::map<std::string, std::size_t> places_;
    std::vector<std::string> json_;
};

/// What the script works with.
class PageData {
public:
    PageData(const StockPage& page, Language language) : page_(page), language_(language) {}

    std::string json() {
        const std::string ledger = json_of_ledger(), cards = json_of_cards(), days = json_of_days();
        nlohmann::json words;
        for (const PageWord& word : page_words()) words[std::string(word.name)] = word.wording.in(language_);
        const Date begins = page_.cards_begin.value_or(page_.journal_begins.value_or(page_.made_at));
        return json_for_html(fmt::format(
            R"({{"made":{},"begins":{},"ledger":{},"cards":{},"days":{},"strings":{},"words":{}}})",
            seconds_of(page_.made_at), seconds_of(begins), ledger, cards, days, strings_.json(), words.dump()));
    }

private:
    std::string json_of_ledger() {
        std::vector<std::string> rows;
        for (const StockRow& row : page_.ledger) {
            std::vector<std::string> cells;
            for (const Text* const text : {&row.warehouse, &row.warehouse_name, &row.goods, &row.goods_name,
                                           &row.model1, &row.model2, &row.status, &row.goods_class, &row.base_unit})
                cells.push_back(strings_.place_of(*text));
            for (const Variant* const quantity : {&row.received, &row.issued, &row.on_hand})
                cells.push_back(json_cell(*quantity));
            rows.push_back(json_list(cells));
        }
        return json_list(rows);
    }

    /// One card for each row of the ledger, 0 where it has none.
    std::string json_of_cards() {
        const auto key_of = [](const auto& row) {
            return std::tie(row.warehouse, row.goods, row.model1, row.model2, row.status);
        };
        std::map<decltype(key_of(StockRow())), const StockCard*> by_key;
        for (const StockCard& card : page_.cards) by_key.emplace(key_of(card.row), &card);
        std::vector<std::string> cards;
        for (const StockRow& row : page_.ledger) {
            const auto found = by_key.find(key_of(row));
            cards.push_back(found == by_key.end() ? "0" : json_of(*found->second));
        }
        return json_list(cards);
    }

    std::string json_of(const StockCard& card) {
        std::vector<std::string> entries;
        for (const CardEntry& entry : card.entries) {
            const int kind = !entry.bill_kind.empty() ? of_a_bill
                             : entry.action == u"gap" ? while_journal_was_off
                                                      : without_bill;
            entries.push_back(json_list(
                {std::to_string(seconds_of(entry.moved_at)), strings_.place_of(account_of(entry, language_)),
                 strings_.place_of(entry.bill_id), entry.line.is<Null>() ? "0" : std::to_string(to_long(entry.line)),
                 json_quantity(entry.received), json_quantity(entry.issued), json_quantity(entry.change),
                 strings_.place_of(by_whom(entry)), std::to_string(kind)}));
        }
        return fmt::format("[{},{}]", json_quantity(card.opening), json_list(entries));
    }

    /// The days of each unit, the unit that moved on most days first.
    std::string json_of_days() {
        std::map<std::string, std::vector<std::string>> of_units;
        for (const PeriodOfUnit& day : page_.days) {
            const std::optional<Date> date = date_from_text(from_utf8(day.begins));
            if (!date) continue;
            of_units[day.unit].push_back(
                json_list({std::to_string(seconds_of(*date)), json_quantity(day.opening), json_quantity(day.received),
                           json_quantity(day.issued), json_quantity(day.closing)}));
        }
        std::vector<std::pair<std::string, std::vector<std::string>>> units(of_units.begin(), of_units.end());
        std::ranges::stable_sort(units, std::ranges::greater(), [](const auto& unit) { return unit.second.size(); });
        std::vector<std::string> json;
        for (const auto& [unit, days] : units) json.push_back(json_list({strings_.place_of(unit), json_list(days)}));
        return json_list(json);
    }

    const StockPage& page_;
    Language language_;
    Strings strings_;
};

/// The parts of a page that can be read without its script.
class PageParts {
public:
    PageParts(const StockPage& page, Language language) : page_(page), language_(language) {}

    std::string figures() const {
        std::set<Text> goods, warehouses;
        std::size_t negative = 0;
        for (const StockRow& row : page_.ledger) {
            goods.insert(row.goods);
            warehouses.insert(row.warehouse);
            if (is_negative(row)) ++negative;
        }
        std::string figures = figure("goods_count", goods.size()) + figure("warehouses_count", warehouses.size()) +
                              figure("rows_count", page_.ledger.size());
        if (page_.bills) figures += figure("bills_count", *page_.bills);
        return figures + figure("negative_count", negative, negative > 0);
    }

    std::string verification() const {
        const Verdict& verdict = page_.verdict;
        if (!verdict.failure.empty()) return verdict_text("", words("not_verified", html_text(verdict.failure)));
        std::istringstream report(verdict.report);
        std::string line;
        std::getline(report, line);
        if (verdict.causes.empty()) return verdict_text(" good", html_text(line));
        std::string html = verdict_text(" bad", html_text(line)) + "<ul>";
        for (const auto& [cause, cases] : verdict.causes)
            html += "<li>" + words("cause_count", html_text(cause), Count(cases)) + "</li>";
        html += fmt::format("</ul><details><summary>{}</summary><pre tabindex=\"0\">", word("verify_report"));
        std::size_t lines = 0;
        while (std::getline(report, line)) {
            if (++lines <= most_report_lines) html += html_text(line) + "\n";
        }
        if (lines > most_report_lines) html += words("report_is_cut", Count(lines - most_report_lines)) + "\n";
        return html + "</pre></details>";
    }

    std::string attention() const {
        std::string rows;
        std::size_t number = 0, shown = 0, negative = 0;
        for (const StockRow& row : page_.ledger) {
            if (is_negative(row) && ++negative <= most_rows_of_attention) {
                ++shown;
                rows += attention_row(row, number);
            }
            ++number;
        }
        if (negative == 0) return "<p>" + word("none_negative") + "</p>";
        return table("negative", "negative_rows", attention_columns) + rows + "</tbody></table></div>" +
               more("more_negative", negative - shown);
    }

    /// What runs low.
    std::string low() const {
        if (!page_.minimums || page_.minimums->rows.empty()) return note(word("no_minimum_set"));
        const Listing& list = *page_.minimums;
        std::string rows;
        std::size_t low = 0;
        for (const auto& row : list.rows) {
            const auto cell = [&](std::string_view column) { return row[*list.find(column)]; };
            const auto text_cell = [&](std::string_view column, std::string_view classes) {
                return "<td" + class_of(classes) + ">" + html_text(cell_text(cell(column))) + "</td>";
            };
            if (to_currency(cell("shortage")) == Currency() || ++low > most_rows_of_attention) continue;
            rows += "<tr><td>" + named(to_text(cell("goods")), to_text(cell("goods_name"))) + "</td>" +
                    text_cell("warehouse", "") + text_cell("model1", "") + text_cell("model2", "secondary") +
                    text_cell("status", "secondary");
            for (const std::string_view column : {"minimum", "on_hand", "shortage"})
                rows += quantity_cell(to_currency(cell(column)));
            rows += text_cell("unit", "") + "</tr>\n";
        }
        if (low == 0) return "<p>" + word("none_low") + "</p>";
        return table("low", "low_rows", low_columns) + rows + "</tbody></table></div>" +
               more("more_low", low > most_rows_of_attention ? low - most_rows_of_attention : 0);
    }

    std::string warehouses() const {
        if (page_.ledger.empty()) return "";
        const Listing list = group_stock(page_.ledger, {StockGroup::warehouse});
        std::string html = folded_table("warehouse", "by_warehouse", "warehouse_caption", warehouse_columns);
        for (const auto& row : list.rows) {
            const auto cell = [&](std::string_view column) { return row[*list.find(column)]; };
            html += "<tr><th scope=\"row\">" + named(to_text(cell("warehouse")), to_text(cell("warehouse_name"))) +
                    "</th><td>" + html_text(cell_text(cell("unit"))) + "</td>" + "<td class=\"number\">" +
                    cell_text(cell("rows")) + "</td>";
            for (const std::string_view column : {"received", "issued", "on_hand"})
                html += quantity_cell(to_currency(cell(column)));
            html += "</tr>";
        }
        return html + "</tbody></table></div></details>";
    }

    std::string journal() const {
        if (!page_.has_journal) return note(word("no_journal"));
        if (!page_.journal_failure.empty()) return note(words("journal_unread", html_text(page_.journal_failure)));
        if (!page_.journal_begins) return note(word("no_movement"));
        std::string html = note(words("journal_since", time_text(*page_.journal_begins)));
        if (page_.cards_begin) {
            std::size_t movements = 0;
            for (const StockCard& card : page_.cards) movements += card.entries.size();
            html += note(words("cards_since", Count(movements), time_text(*page_.cards_begin)));
        }
        return page_.days.empty() ? html + note(word("no_movement")) : html;
    }

    std::string months() const {
        if (page_.days.empty()) return "";
        std::map<std::pair<std::string, std::string>, PeriodOfUnit> months;
        for (const PeriodOfUnit& day : page_.days) {
            const std::string month = day.begins.substr(0, std::string_view("yyyy-MM").size());
            const auto [found, is_new] = months.try_emplace({month, day.unit}, day);
            PeriodOfUnit& sums = found->second;
            if (is_new) continue;
            sums.received = sum(sums.received, day.received);
            sums.issued = sum(sums.issued, day.issued);
            sums.closing = day.closing;
        }
        std::string html = folded_table("months", "months_table", "months_caption", month_columns);
        for (const auto& [key, month] : months) {
            html += "<tr><th scope=\"row\">" + html_text(key.first) + "</th><td>" + html_text(key.second) + "</td>";
            for (const Currency quantity : {month.opening, month.received, month.issued, month.closing})
                html += quantity_cell(quantity);
            html += "</tr>";
        }
        return html + "</tbody></table></div></details>";
    }

    std::string ledger_heads() const {
        std::string heads;
        for (const auto& [name, classes] : ledger_columns) heads += head(name, classes);
        return heads;
    }

    std::string card_heads() const {
        std::string heads;
        for (const auto& [name, classes] : card_columns) heads += head(name, classes);
        return heads;
    }

    /// The whole ledger as a table, for browsers that run no script; its rows end where HTML lets them.
    std::string ledger_rows() const {
        std::string html = note(word("without_script")) + "<table><caption>" + word("ledger_caption") +
                           "</caption><thead><tr>" + ledger_heads() + "</tr></thead><tbody>\n";
        for (const StockRow& row : page_.ledger) {
            html += "<tr>";
            for (const auto& [id, name] :
                 {std::tie(row.warehouse, row.warehouse_name), std::tie(row.goods, row.goods_name)})
                html += "<td>" + html_text(to_utf8(name.empty() ? id : id + u" " + name));
            for (const Text* const text : {&row.model1, &row.model2, &row.status, &row.goods_class, &row.base_unit})
                html += "<td>" + html_text(to_utf8(*text));
            for (const Variant* const quantity : {&row.received, &row.issued, &row.on_hand})
                html += "<td class=number>" + html_text(cell_text(*quantity));
            html += "\n";
        }
        return html + "</tbody></table>";
    }

    [[nodiscard]] std::string word(std::string_view name) const { return std::string(page_word(name, language_)); }

    /// A text with its places filled by what is HTML already.
    template <typename... Values>
    [[nodiscard]] std::string words(std::string_view name, const Values&... values) const {
        return fmt::format(fmt::runtime(page_word(name, language_)), values...);
    }

    static std::string time_text(Date time) { return to_utf8(format_date_time(time)); }

private:
    using Column = std::pair<std::string_view, std::string_view>;  // its title and the classes of its cells
    static constexpr Column ledger_columns[] = {{"warehouse", ""},
                                                {"goods", ""},
                                                {"model1", ""},
                                                {"model2", "secondary"},
                                                {"status", "secondary"},
                                                {"class", "secondary"},
                                                {"unit", ""},
                                                {"received", "number secondary"},
                                                {"issued", "number secondary"},
                                                {"on_hand", "number"}};
    static constexpr Column attention_columns[] = {
        {"warehouse", ""},       {"goods", ""},         {"model1", ""}, {"model2", "secondary"},
        {"status", "secondary"}, {"on_hand", "number"}, {"unit", ""}};
    static constexpr Column low_columns[] = {{"goods", ""},           {"warehouse", ""},       {"model1", ""},
                                             {"model2", "secondary"}, {"status", "secondary"}, {"minimum", "number"},
                                             {"on_hand", "number"},   {"shortage", "number"},  {"unit", ""}};
    static constexpr Column warehouse_columns[] = {{"warehouse", ""},      {"unit", ""},         {"rows", "number"},
                                                   {"received", "number"}, {"issued", "number"}, {"on_hand", "number"}};
    static constexpr Column month_columns[] = {{"month", ""},          {"unit", ""},         {"opening", "number"},
                                               {"received", "number"}, {"issued", "number"}, {"closing", "number"}};
    static constexpr Column card_columns[] = {
        {"time", "time"},       {"entry", ""},        {"bill", ""},          {"line", "number secondary"},
        {"received", "number"}, {"issued", "number"}, {"balance", "number"}, {"by", "secondary"}};

    /// The beginning of a table, up to its first row.
    [[nodiscard]] std::string table(std::string_view id, std::string_view caption,
                                    std::span<const Column> columns) const {
        std::string html = fmt::format(
            "<div class=\"scroll\" role=\"region\" aria-labelledby=\"{}-caption\" tabindex=\"0\"><table><caption "
            "id=\"{}-caption\">{}</caption><thead><tr>",
            id, id, word(caption));
        for (const auto& [name, classes] : columns) html += head(name, classes);
        return html + "</tr></thead><tbody>";
    }

    /// The same of a table that opens when its title is chosen.
    [[nodiscard]] std::string folded_table(std::string_view id, std::string_view title, std::string_view caption,
                                           std::span<const Column> columns) const {
        return "<details><summary>" + word(title) + "</summary>" + table(id, caption, columns);
    }

    /// That so many rows are not shown; nothing if that is none.
    [[nodiscard]] std::string more(std::string_view name, std::size_t rows) const {
        return rows == 0 ? "" : note(words(name, Count(rows)));
    }

    static Currency sum(Currency left, Currency right) {
        return Currency::from_ten_thousandths(left.ten_thousandths() + right.ten_thousandths());
    }

    static std::string class_of(std::string_view classes) {
        return classes.empty() ? "" : fmt::format(" class=\"{}\"", classes);
    }

    [[nodiscard]] std::string head(std::string_view name, std::string_view classes) const {
        return fmt::format("<th scope=\"col\"{}>{}</th>", class_of(classes), word(name));
    }

    [[nodiscard]] std::string figure(std::string_view name, std::size_t number, bool is_bad = false) const {
        return fmt::format("<div{}><dt>{}</dt><dd>{}</dd></div>", is_bad ? " class=\"bad\"" : "", word(name), number);
    }

    static std::string verdict_text(std::string_view classes, const std::string& html) {
        return fmt::format("<p class=\"verdict{}\">{}</p>", classes, html);
    }

    static std::string note(const std::string& html) { return "<p class=\"note\">" + html + "</p>"; }

    static std::string named(const Text& id, const Text& name) {
        const std::string html = "<span class=id>" + html_text(to_utf8(id)) + "</span>";
        return name.empty() ? html : html + " " + html_text(to_utf8(name));
    }

    static std::string quantity_cell(Currency quantity) {
        return fmt::format("<td class=\"number{}\">{}</td>", quantity < Currency() ? " negative" : "",
                           quantity_text(quantity));
    }

    static std::string attention_row(const StockRow& row, std::size_t number) {
        std::string html =
            fmt::format("<tr><td>{}</td><td data-row=\"{}\">{}</td>", named(row.warehouse, row.warehouse_name), number,
                        named(row.goods, row.goods_name));
        html += "<td>" + html_text(to_utf8(row.model1)) + "</td><td class=\"secondary\">" +
                html_text(to_utf8(row.model2)) + "</td><td class=\"secondary\">" + html_text(to_utf8(row.status)) +
                "</td>";
        return html + quantity_cell(to_currency(row.on_hand)) + "<td>" + html_text(to_utf8(row.base_unit)) +
               "</td></tr>\n";
    }

    const StockPage& page_;
    Language language_;
};

std::string content_policy() {
    std::string scripts;
    for (const Asset* const script : {&jquery_script, &datatables_script, &chart_script, &page_script})
        scripts += " " + content_hash(script->text());
    return "default-src 'none'; script-src" + scripts + "; style-src " + content_hash(page_style.text()) +
           "; img-src data:; base-uri 'none'; form-action 'none'";
}

std::string notices() {
    const std::pair<std::string_view, const Asset*> libraries[] = {
        {"jQuery", &jquery_notice}, {"DataTables", &datatables_notice}, {"Chart.js", &chart_notice}};
    std::string text;
    for (const auto& [name, notice] : libraries) text += fmt::format("{}\n\n{}\n\n", name, html_text(notice->text()));
    return text;
}

}  // namespace

std::string page_html(const StockPage& page, const std::string& database, const std::string& version,
                      Language language) {
    const PageParts parts(page, language);
    const auto value_of = [&](std::string_view name) -> std::string {
        if (name == "language") return language == Language::chinese ? "zh" : "en";
        if (name == "version") return html_text(version);
        if (name == "policy") return content_policy();
        if (name == "made")
            return parts.words("made", PageParts::time_text(page.made_at), page.utc_offset, html_text(version),
                               html_text(database), html_text(page.engine));
        if (name == "figures") return parts.figures();
        if (name == "verification") return parts.verification();
        if (name == "warehouses") return parts.warehouses();
        if (name == "attention_tables") return parts.attention() + parts.low();
        if (name == "journal") return parts.journal();
        if (name == "months") return parts.months();
        if (name == "ledger_heads") return parts.ledger_heads();
        if (name == "ledger_rows") return parts.ledger_rows();
        if (name == "card_heads") return parts.card_heads();
        if (name == "notices") return notices();
        if (name == "data") return PageData(page, language).json();
        const std::pair<std::string_view, const Asset*> contents[] = {{"style", &page_style},
                                                                      {"script", &page_script},
                                                                      {"jquery", &jquery_script},
                                                                      {"datatables", &datatables_script},
                                                                      {"chart", &chart_script}};
        for (const auto& [asset_name, asset] : contents) {
            if (name == asset_name) return std::string(asset->text());
        }
        return html_text(parts.word(name));
    };
    return filled(page_template.text(), value_of);
}

}  // namespace vantlo
