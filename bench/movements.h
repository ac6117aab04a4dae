#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "ado/native/native_connection.h"
#include "bills/bill.h"
#include "component/inventory_class.h"

namespace vantlo::bench {

/// Lines of goods moved between two warehouses, in boxes of 12: the same ones in every run.
/// Shape    over `goods` kinds of goods in eight models each, between the same two warehouses: the ledger gets 16 rows
///          for each of the goods; the goods and model of a line come again 8 * `goods` lines later.
std::vector<Record> movements(std::size_t count, std::size_t goods, std::size_t first = 0);

/// The statements, in UTF-8, that make the tables where they are missing and fill in the units of so many kinds of goods.
std::vector<std::string> shop_statements(const Dialect& dialect, std::size_t goods);

/// Runs statements given in UTF-8, in one transaction.
void run_all(NativeConnection& database, const std::vector<std::string>& statements);

/// Posts lines through the component, as a host does that saves stock bills.
class Poster {
public:
    explicit Poster(Connection& connection);
    Poster(const Poster&) = delete;
    Poster& operator=(const Poster&) = delete;
    ~Poster();

    /// Errors   std::runtime_error unless the component answers 0.
    void post(const Record& line);

private:
    Inventory_Class component_;
    const Member& member_;
};

}  // namespace vantlo::bench
