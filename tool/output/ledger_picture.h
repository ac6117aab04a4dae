#pragma once

#include <map>
#include <string>
#include <vector>

#include "ado/native/native_connection.h"
#include "bills/ledger_row.h"

namespace vantlo {

/// What a picture of the ledger shows. Quantities are doubles, in base units: exact enough to draw.
struct LedgerPicture {
    struct Warehouse {
        std::string name;
        double on_hand = 0;                    ///< as the ledger holds it
        std::map<std::string, double> by_day;  ///< stock after each day (yyyy-MM-dd) that moved it
    };
    struct Day {
        double received = 0;
        double issued = 0;
    };
    std::vector<Warehouse> warehouses;  ///< highest stock first
    std::map<std::string, Day> days;    ///< by date
};

/// Reads the stock from the ledger, and the movement from the stored bills, posted again in memory.
LedgerPicture read_picture(NativeConnection& database, const LedgerFilter& filter, Language language);

/// The picture as one SVG file without references to others; the viewer supplies the fonts.
std::string picture_svg(const LedgerPicture& picture, Language language);

/// The drawing in an HTML page, with the numbers as a table below it.
std::string picture_page(const LedgerPicture& picture, Language language);

}  // namespace vantlo
