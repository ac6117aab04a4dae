#include "tool/output/ledger_picture.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <set>

#include "audit/recomputation.h"
#include "automation/calendar.h"
#include "tool/output/ledger_table.h"
#include "tool/output/words.h"

namespace vantlo {

namespace words {

// clang-format off
constexpr Message picture_title  = {"库存台账", "Stock ledger"};
constexpr Message picture_units  = {"全部商品合计，基本单位", "All goods together, in base units"};
constexpr Message picture_stock  = {"各仓库结存", "On hand by warehouse"};
constexpr Message picture_over_time = {"各仓库结存的变化", "On hand over time"};
constexpr Message picture_movement = {"每日收发", "Movement by day"};
constexpr Message picture_more   = {"另有 {} 个仓库", "and {:warehouse|warehouses} more"};
// clang-format on

}  // namespace words

namespace {

constexpr double width = 960;
constexpr double margin = 40;
constexpr double label_width = 190;
constexpr double bar_pitch = 34;
constexpr double panel_height = 220;
constexpr std::size_t most_bars = 12;
constexpr const char* colours[] = {"#2f6f8f", "#d9822b", "#4f9d69", "#8a5a9e", "#3aa6a0", "#7d8a2e"};
constexpr const char* received_colour = "#4f9d69";
constexpr const char* issued_colour = "#d9822b";
constexpr const char* negative_colour = "#c2504a";

std::string date_text(const Variant& value) {
    const Date* const date = value.get_if<Date>();
    return to_utf8(date != nullptr ? format_date(*date) : to_text(value).substr(0, 10));
}

bool is_wanted(const LedgerEntry& entry, const LedgerFilter& filter) {
    const auto equals = [](const std::optional<Text>& part, const Text& wanted) {
        return wanted.empty() || (part && trim_blanks(*part) == wanted);
    };
    const Variant& goods_class = entry.details[0];
    return equals(entry.key.parts[0], filter.warehouse) && equals(entry.key.parts[1], filter.goods) &&
           (filter.goods_class.empty() || (!goods_class.is<Null>() && to_text(goods_class) == filter.goods_class)) &&
           (!filter.status || equals(entry.key.parts[status_part], from_utf8(std::to_string(*filter.status))));
}

double units(std::int64_t ten_thousandths) { return Currency::from_ten_thousandths(ten_thousandths).to_double(); }

std::string escaped(const std::string& text) {
    std::string result;
    for (const char character : text) {
        switch (character) {
            case '&': result += "&amp;"; break;
            case '<': result += "&lt;"; break;
            case '>': result += "&gt;"; break;
            case '"': result += "&quot;"; break;
            default: result += character;
        }
    }
    return result;
}

/// A number with blanks between thousands. Example: `12 345.5`
std::string number(double value) {
    std::string digits = fmt::format("{:.4f}", std::abs(value));
    digits.erase(digits.find_last_not_of('0') + 1);
    if (digits.ends_with('.')) digits.pop_back();
    const std::size_t whole = std::min(digits.find('.'), digits.size());
    for (std::size_t at = whole; at > 3; at -= 3) digits.insert(at - 3, " ");
    return (value < 0 ? "−" : "") + digits;
}

/// The marks of an axis: multiples of 1, 2 or 5 times a power of ten that cover both values and 0.
std::vector<double> ticks(double lowest, double highest) {
    const double span = std::max(highest, 0.0) - std::min(lowest, 0.0);
    if (span == 0) return {0, 1};
    const double magnitude = std::pow(10, std::floor(std::log10(span / 4)));
    double step = magnitude;
    for (const double factor : {2.0, 5.0, 10.0}) {
        if (span / step > 5) step = factor * magnitude;
    }
    std::vector<double> values;
    const int first = static_cast<int>(std::floor(std::min(lowest, 0.0) / step));
    const int last = static_cast<int>(std::ceil(std::max(highest, 0.0) / step));
    for (int i = first; i <= last; ++i) values.push_back(i * step);
    return values;
}

/// Maps values to places on a line.
struct Scale {
    double low, high, from, to;
    [[nodiscard]] double operator()(double value) const { return from + (value - low) / (high - low) * (to - from); }
};

class Drawing {
public:
    void line(double x1, double y1, double x2, double y2, const std::string& style) {
        body_ +=
            fmt::format("<line x1=\"{:.1f}\" y1=\"{:.1f}\" x2=\"{:.1f}\" y2=\"{:.1f}\" {}/>\n", x1, y1, x2, y2, style);
    }
    /// A rectangle between two corners; `title` is its tooltip.
    void bar(double x1, double y1, double x2, double y2, const char* colour, const std::string& title) {
        body_ += fmt::format(
            "<rect x=\"{:.1f}\" y=\"{:.1f}\" width=\"{:.1f}\" height=\"{:.1f}\" rx=\"2\" "
            "fill=\"{}\"><title>{}</title></rect>\n",
            std::min(x1, x2), std::min(y1, y2), std::abs(x2 - x1), std::abs(y2 - y1), colour, escaped(title));
    }
    void text(double x, double y, const std::string& text, const std::string& style = "") {
        body_ += fmt::format("<text x=\"{:.1f}\" y=\"{:.1f}\" {}>{}</text>\n", x, y, style, escaped(text));
    }
    void path(const std::string& steps, const char* colour) {
        body_ +=
            fmt::format("<path d=\"{}\" fill=\"none\" stroke=\"{}\" stroke-width=\"2\" stroke-linejoin=\"round\"/>\n",
                        steps, colour);
    }
    [[nodiscard]] std::string svg(double height, const std::string& title) const {
        return fmt::format(
            "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 {0:.0f} {1:.0f}\" width=\"{0:.0f}\" "
            "height=\"{1:.0f}\" "
            "role=\"img\" font-family=\"'Noto Sans CJK SC','WenQuanYi Micro Hei','Microsoft YaHei',sans-serif\" "
            "font-size=\"13\" fill=\"#2b2f33\">\n<title>{2}</title>\n"
            "<rect width=\"100%\" height=\"100%\" fill=\"#fcfcfa\"/>\n{3}</svg>\n",
            width, height, escaped(title), body_);
    }

private:
    std::string body_;
};

constexpr const char* grid = "stroke=\"#e3e3dd\"";
constexpr const char* axis = "stroke=\"#9a9a92\"";
constexpr const char* right_aligned = "text-anchor=\"end\"";
constexpr const char* small_right = "text-anchor=\"end\" font-size=\"11\" fill=\"#77776f\"";
constexpr const char* small_centred = "text-anchor=\"middle\" font-size=\"11\" fill=\"#77776f\"";
constexpr const char* heading = "font-size=\"16\" font-weight=\"bold\"";

const char* colour_of(std::size_t warehouse) { return colours[warehouse % std::size(colours)]; }

/// Draws the stock on hand as one bar a warehouse. Returns the y below it.
double draw_stock(Drawing& drawing, const LedgerPicture& picture, double top, Language language) {
    drawing.text(margin, top, words::picture_stock.in(language), heading);
    const std::size_t count = std::min(picture.warehouses.size(), most_bars);
    double lowest = 0, highest = 0;
    for (std::size_t i = 0; i < count; ++i) {
        lowest = std::min(lowest, picture.warehouses[i].on_hand);
        highest = std::max(highest, picture.warehouses[i].on_hand);
    }
    const std::vector<double> marks = ticks(lowest, highest);
    const Scale x{marks.front(), marks.back(), margin + label_width, width - margin - 70};
    const double first = top + 18, bottom = first + static_cast<double>(count) * bar_pitch;
    for (const double mark : marks) {
        drawing.line(x(mark), first, x(mark), bottom, mark == 0 ? axis : grid);
        drawing.text(x(mark), bottom + 16, number(mark), small_centred);
    }
    for (std::size_t i = 0; i < count; ++i) {
        const LedgerPicture::Warehouse& warehouse = picture.warehouses[i];
        const double y = first + static_cast<double>(i) * bar_pitch + 6;
        const bool is_negative = warehouse.on_hand < 0;
        drawing.text(margin + label_width - 12, y + 16, warehouse.name, right_aligned);
        drawing.bar(x(0), y, x(warehouse.on_hand), y + bar_pitch - 12, is_negative ? negative_colour : colour_of(i),
                    warehouse.name + ": " + number(warehouse.on_hand));
        drawing.text(std::max(x(0), x(warehouse.on_hand)) + 8, y + 16, number(warehouse.on_hand));
    }
    if (picture.warehouses.size() > count) {
        drawing.text(margin, bottom + 34, say(language, words::picture_more, Count(picture.warehouses.size() - count)));
        return bottom + 44;
    }
    return bottom + 30;
}

/// Draws the value axis and the dates of a panel; maps days and values to coordinates.
class TimePanel {
public:
    TimePanel(Drawing& drawing, const std::set<std::string>& days, double top, double lowest, double highest)
        : marks_(ticks(lowest, highest)),
          y_{marks_.front(), marks_.back(), top + panel_height, top},
          x_{0, static_cast<double>(days.size()), margin + 70, width - margin} {
        for (const double mark : marks_) {
            drawing.line(x_.from, y_(mark), x_.to, y_(mark), mark == 0 ? axis : grid);
            drawing.text(x_.from - 8, y_(mark) + 4, number(mark), small_right);
        }
        const std::size_t pitch = std::max<std::size_t>(1, (days.size() + 9) / 10);
        std::size_t i = 0;
        for (const std::string& day : days) {
            if (i % pitch == 0) drawing.text(x(day_middle(i)), top + panel_height + 18, day, small_centred);
            ++i;
        }
    }
    [[nodiscard]] static double day_middle(std::size_t day) { return static_cast<double>(day) + 0.5; }
    [[nodiscard]] double x(double day) const { return x_(day); }
    [[nodiscard]] double y(double value) const { return y_(value); }

private:
    std::vector<double> marks_;
    Scale y_, x_;
};

double draw_on_hand_over_time(Drawing& drawing, const LedgerPicture& picture, const std::set<std::string>& days,
                              double top, Language language) {
    drawing.text(margin, top, words::picture_over_time.in(language), heading);
    double lowest = 0, highest = 0;
    for (const auto& warehouse : picture.warehouses) {
        for (const auto& [day, on_hand] : warehouse.by_day) {
            lowest = std::min(lowest, on_hand);
            highest = std::max(highest, on_hand);
        }
    }
    const TimePanel panel(drawing, days, top + 20, lowest, highest);
    const std::size_t shown = std::min(picture.warehouses.size(), std::size(colours));
    for (std::size_t i = 0; i < shown; ++i) {
        std::string steps;
        double on_hand = 0;
        std::size_t day_number = 0;
        for (const std::string& day : days) {
            const double x1 = panel.x(static_cast<double>(day_number++));
            const auto& by_day = picture.warehouses[i].by_day;
            if (const auto found = by_day.find(day); found != by_day.end()) on_hand = found->second;
            steps += fmt::format("{}{:.1f} {:.1f} H {:.1f} ", steps.empty() ? "M" : "L", x1, panel.y(on_hand),
                                 panel.x(static_cast<double>(day_number)));
        }
        drawing.path(steps, colour_of(i));
    }
    return top + panel_height + 70;
}

double draw_movement(Drawing& drawing, const LedgerPicture& picture, const std::set<std::string>& days, double top,
                     Language language) {
    drawing.text(margin, top, words::picture_movement.in(language), heading);
    drawing.bar(width - margin - 190, top - 11, width - margin - 178, top + 1, received_colour, "");
    drawing.text(width - margin - 172, top, words::received.in(language));
    drawing.bar(width - margin - 90, top - 11, width - margin - 78, top + 1, issued_colour, "");
    drawing.text(width - margin - 72, top, words::issued.in(language));
    double lowest = 0, highest = 0;
    for (const auto& [date, day] : picture.days) {
        lowest = std::min({lowest, -day.issued, day.received});
        highest = std::max({highest, -day.issued, day.received});
    }
    const TimePanel panel(drawing, days, top + 20, lowest, highest);
    std::size_t day_number = 0;
    for (const std::string& date : days) {
        const double middle = TimePanel::day_middle(day_number++);
        const double left = panel.x(middle - 0.35), right = panel.x(middle + 0.35);
        const auto found = picture.days.find(date);
        if (found == picture.days.end()) continue;
        const auto& [received, issued] = found->second;
        drawing.bar(left, panel.y(0), right, panel.y(received), received_colour,
                    fmt::format("{} {} {}", date, words::received.in(language), number(received)));
        drawing.bar(left, panel.y(0), right, panel.y(-issued), issued_colour,
                    fmt::format("{} {} {}", date, words::issued.in(language), number(issued)));
    }
    return top + panel_height + 60;
}

/// What the stored bills add to the stock of each warehouse, by date.
using StockByDay = std::map<std::string, std::map<Text, double>>;

/// Posts the stored bills again in memory, and adds each day's movement to the picture.
StockByDay read_days(NativeConnection& database, const LedgerFilter& filter, Language language,
                     LedgerPicture& picture) {
    const BillTimeline timeline = read_timeline(database);
    const Recomputation posted = recompute(database, timeline, language);
    StockByDay added;
    for (const PostingStep& step : posted.steps) {
        const LedgerEntry& row = posted.rows[step.row];
        if (!is_wanted(row, filter) || !row.key.parts[0]) continue;
        const std::string date = date_text(timeline.events[step.event].bill.header.value(u"BillDate"));
        picture.days[date].received += units(step.added[0]);
        picture.days[date].issued += units(step.added[1]);
        added[date][*row.key.parts[0]] += units(step.added[2]);
    }
    return added;
}

/// Sums the days up to each warehouse's stock at the end of each day that moved it.
void add_up(const StockByDay& added, std::map<Text, LedgerPicture::Warehouse>& warehouses) {
    std::map<Text, double> on_hand;
    for (const auto& [date, of_warehouses] : added) {
        for (const auto& [id, quantity] : of_warehouses) {
            on_hand[id] += quantity;
            if (const auto found = warehouses.find(id); found != warehouses.end()) {
                found->second.by_day[date] = on_hand[id];
            }
        }
    }
}

}  // namespace

LedgerPicture read_picture(NativeConnection& database, const LedgerFilter& filter, Language language) {
    std::map<Text, LedgerPicture::Warehouse> warehouses;
    for (const LedgerRow& row : read_ledger(database, filter)) {
        LedgerPicture::Warehouse& warehouse = warehouses[row.warehouse];
        warehouse.name = named(row.warehouse, row.warehouse_name);
        warehouse.on_hand += row.on_hand.to_double();
    }
    LedgerPicture picture;
    add_up(read_days(database, filter, language, picture), warehouses);
    for (auto& [id, warehouse] : warehouses) picture.warehouses.push_back(std::move(warehouse));
    std::ranges::stable_sort(picture.warehouses, std::ranges::greater(), &LedgerPicture::Warehouse::on_hand);
    return picture;
}

std::string picture_svg(const LedgerPicture& picture, Language language) {
    Drawing drawing;
    const std::string title = words::picture_title.in(language);
    drawing.text(margin, 48, title, "font-size=\"24\" font-weight=\"bold\"");
    drawing.text(margin, 72, words::picture_units.in(language), "fill=\"#77776f\"");
    double bottom = draw_stock(drawing, picture, 112, language);
    std::set<std::string> days;
    for (const auto& [date, day] : picture.days) days.insert(date);
    if (!days.empty()) {
        bottom = draw_on_hand_over_time(drawing, picture, days, bottom + 36, language);
        bottom = draw_movement(drawing, picture, days, bottom + 10, language);
    }
    return drawing.svg(bottom + 10, title);
}

std::string picture_page(const LedgerPicture& picture, Language language) {
    std::string rows;
    for (const auto& warehouse : picture.warehouses) {
        rows += fmt::format("<tr><td>{}</td><td class=\"number\">{}</td></tr>\n", escaped(warehouse.name),
                            number(warehouse.on_hand));
    }
    return fmt::format(
        "<!doctype html>\n<html lang=\"{}\">\n<meta charset=\"utf-8\">\n<meta name=\"viewport\" "
        "content=\"width=device-width\">\n<title>{}</title>\n<style>\n"
        "body {{ margin: 2em auto; max-width: 60em; font-family: sans-serif; background: #fcfcfa; color: #2b2f33 }}\n"
        "svg {{ max-width: 100%; height: auto }}\ntable {{ border-collapse: collapse; margin: 1em 40px }}\n"
        "td, th {{ padding: .3em 1em; border-bottom: 1px solid #e3e3dd; text-align: left }}\n"
        ".number {{ text-align: right }}\n</style>\n{}<table>\n<tr><th>{}</th><th class=\"number\">{}</th></tr>\n"
        "{}</table>\n</html>\n",
        language == Language::chinese ? "zh" : "en", words::picture_title.in(language), picture_svg(picture, language),
        words::warehouse.in(language), words::on_hand.in(language), rows);
}

}  // namespace vantlo
