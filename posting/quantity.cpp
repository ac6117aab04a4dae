#include "posting/quantity.h"

#include "dataaccess/unit_conversion.h"

namespace vantlo {

Currency base_quantity(Line& line, TextView column, const QuantityRule& rule) {
    Text gid;
    Text unit;
    Variant quantity_read;
    Currency quantity_line;
    Currency factor;
    for (const QuantityStep step : rule.steps) {
        switch (step) {
            case QuantityStep::goods: gid = to_text(line.value(u"Gid")); break;
            case QuantityStep::unit: unit = to_text(line.value(u"Unit")); break;
            case QuantityStep::quantity: quantity_read = line.value(column); break;
            case QuantityStep::convert:
                quantity_line = to_currency(quantity_read);
                if (rule.takes_magnitude) quantity_line = absolute(quantity_line);
                break;
            case QuantityStep::factor: factor = GoodsUnitConverter(gid, unit); break;
        }
    }
    return quantity_line * factor;
}

}  // namespace vantlo
