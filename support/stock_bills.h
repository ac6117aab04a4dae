#pragma once

#include "automation/calendar.h"
#include "bills/bill.h"

namespace vantlo::test {

/// A stock bill of one line: `quantity` pieces of a goods item move from one warehouse to another.
inline Bill stock_bill(const Text& id, const Text& goods, int quantity, const Text& receiver, const Text& supplier) {
    Bill bill{find_bill_kind("stock"), id, {}, {}};
    bill.header.set(u"BillDate", date_of({2024, 3, 5, 0, 0, 0}));
    bill.header.set(u"ReferFlag", std::int32_t{0});
    bill.header.set(u"Remarks", u"");
    Record& line = bill.lines.emplace_back();
    line.set(u"Receiver", receiver);
    line.set(u"Supplier", supplier);
    line.set(u"Gid", goods);
    line.set(u"Model1", u"red");
    line.set(u"Model2", u"");
    line.set(u"Class", u"C1");
    line.set(u"Unit", u"pcs");
    line.set(u"Actualqty", static_cast<float>(quantity));
    line.set(u"Remarks", u"");
    return bill;
}

}  // namespace vantlo::test
