#include "posting/quantity.h"

#include "dataaccess/unit_conversion.h"

namespace vantlo {

// Every read and every conversion stands on a line of its own: the order in which they run is what a host sees.

namespace {

using Magnitude = Currency (*)(Currency);

Currency as_it_stands(Currency quantity) { return quantity; }

Currency times_factor(Line& line, TextView column, Magnitude magnitude) {
    const Text gid = to_text(line.value(u"Gid"));
    const Variant quantity = line.value(column);
    const Text unit = to_text(line.value(u"Unit"));
    const Currency quantity_line = magnitude(to_currency(quantity));
    const Currency factor = GoodsUnitConverter(gid, unit);
    return quantity_line * factor;
}

Currency stored_times_factor(Line& line, TextView column, Magnitude magnitude) {
    const Currency quantity_line = magnitude(to_currency(line.value(column)));
    const Text gid = to_text(line.value(u"Gid"));
    const Text unit = to_text(line.value(u"Unit"));
    const Currency factor = GoodsUnitConverter(gid, unit);
    return quantity_line * factor;
}

}  // namespace

Currency quantity_times_factor(Line& line, TextView column) { return times_factor(line, column, as_it_stands); }

Currency stored_quantity_times_factor(Line& line, TextView column) {
    return stored_times_factor(line, column, as_it_stands);
}

Currency factor_times_quantity(Line& line, TextView column) {
    const Text gid = to_text(line.value(u"Gid"));
    const Variant quantity = line.value(column);
    const Text unit = to_text(line.value(u"Unit"));
    const Currency factor = GoodsUnitConverter(gid, unit);
    const Currency quantity_line = to_currency(quantity);
    return factor * quantity_line;
}

Currency factor_times_quantity_read_last(Line& line, TextView column) {
    const Text gid = to_text(line.value(u"Gid"));
    const Text unit = to_text(line.value(u"Unit"));
    const Currency factor = GoodsUnitConverter(gid, unit);
    const Currency quantity_line = to_currency(line.value(column));
    return factor * quantity_line;
}

Currency magnitude_times_factor(Line& line, TextView column) { return times_factor(line, column, absolute); }

Currency stored_magnitude_times_factor(Line& line, TextView column) {
    return stored_times_factor(line, column, absolute);
}

}  // namespace vantlo
