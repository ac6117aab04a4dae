#include "tests/support/test_database.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "ado/native/open_connection.h"
#include "automation/error.h"
#include "automation/number_text.h"

namespace vantlo::test {

namespace {

struct NumericColumn {
    std::string_view name;
    TextView type;
};
// clang-format off
constexpr NumericColumn numeric_columns[] = {
    {"UnitConverter", u"double precision"},
    {"Actualqty",     u"real"},
    {"Qty",           u"real"},
    {"UQty",          u"real"},
    {"ReferFlag",     u"smallint"},
    {"Goodstutas",    u"integer"},
    {"GoodsStatus",   u"integer"},
};
// clang-format on

/// The type that keeps a value as it stands: the column's own, or a wider one.
TextView type_for(TextView own_type, const Variant& value) {
    if (value.is<Null>()) return own_type;
    const std::optional<double> number = double_from_text(to_text(value));
    if (!number) return u"varchar(40)";
    const bool whole = own_type == u"smallint" || own_type == u"integer";
    if (whole && *number != std::floor(*number)) return u"double precision";
    if (whole && std::abs(*number) > INT32_MAX) return u"bigint";
    if (own_type == u"smallint" && std::abs(*number) > INT16_MAX) return u"integer";
    return own_type;
}

Text retype(std::string_view dialect, const std::string& table, std::string_view column, TextView type) {
    Text text = u"alter table " + from_utf8(table) + u" ";
    if (dialect == "mariadb")
        return text + u"modify " + from_utf8(column) + u" " + (type == u"real" ? u"float" : Text(type));
    text += u"alter column " + from_utf8(column);
    if (dialect != "postgresql") return text + u" " + Text(type);
    return text + u" type " + Text(type) + u" using " + from_utf8(column) + u"::" + Text(type);
}

constexpr TextView signs_together = u"Qty--";
constexpr TextView signs_apart = u"Qty- -";

Text with_signs_apart(Text statement) {
    for (std::size_t at = 0; (at = statement.find(signs_together, at)) != Text::npos;) {
        statement.replace(at, signs_together.size(), signs_apart);
    }
    return statement;
}

}  // namespace

std::string schema_of(std::string_view dialect) {
    const std::string file = "schema/" + std::string(dialect) + ".sql";
    std::ifstream schema(VANTLO_SOURCE_DIR "/" + file);
    if (!schema) throw std::runtime_error("there is no " + file);
    return {std::istreambuf_iterator<char>(schema), std::istreambuf_iterator<char>()};
}

/// Reads numbers from real columns that were widened to text as Single, as SQLite keeps them.
class TestDatabase::OwnTypes final : public Connection {
public:
    explicit OwnTypes(NativeConnection& connection) : connection_(connection) {}

    void add_reference() noexcept override {}
    void release() noexcept override {}
    RecordsetVariable execute(TextView statement) override {
        ResultTable table = connection_.run(statement);
        for (std::size_t i = 0; i < table.columns.size(); ++i) {
            if (!is_real(to_utf8(table.columns[i]))) continue;
            for (std::vector<Variant>& row : table.rows) narrow(row[i]);
        }
        return make_client_recordset(std::move(table));
    }

private:
    static bool is_real(const std::string& name) {
        return std::ranges::any_of(numeric_columns, [&](const NumericColumn& column) {
            return column.type == u"real" && equal_ignoring_case(from_utf8(column.name), from_utf8(name));
        });
    }
    static void narrow(Variant& value) {
        if (!value.is<Text>()) return;
        if (const auto number = double_from_text(to_text(value))) value = static_cast<float>(*number);
    }

    NativeConnection& connection_;
};

TestDatabase::TestDatabase(std::string_view database)
    : connection_(open_connection(database)), own_types_(std::make_unique<OwnTypes>(*connection_)) {
    connection_->run_script(schema_of(connection_->dialect().name));
    if (!connection_->execute(u"select * from Inventory")->eof()) {
        throw std::runtime_error("the ledger of this database has rows: tests would delete them");
    }
}

TestDatabase::~TestDatabase() {
    try {
        clear();
    } catch (const Failure&) {  // the test that lost the connection says so itself
    }
}

Connection& TestDatabase::component_connection() {
    if (narrowing_.empty()) return *connection_;
    return *own_types_;
}

void TestDatabase::clear() {
    static constexpr const char16_t* tables[] = {
        u"Inventory",   u"GoodsUnit",        u"Goods",        u"StockBill", u"StockBillItems",
        u"RGstockBill", u"RGstockBillItems", u"GBorrowItems", u"GoodsBill", u"GoodsBillItems",
    };
    for (const char16_t* table : tables) connection_->run(Text(u"delete from ") + table);
    for (const Text& statement : narrowing_) connection_->run(statement);
    narrowing_.clear();
    for (const Text& statement : restoring_) connection_->run(statement);
    restoring_.clear();
}

void TestDatabase::fill(const std::vector<TableRow>& rows, const std::vector<ColumnType>& columns) {
    clear();
    for (const ColumnType& column : columns) declare(column);
    if (connection_->dialect().name != "sqlite")
        std::ranges::for_each(rows, [this](const TableRow& row) { widen(row); });
    for (const TableRow& row : rows) connection_->run(insert_text(row));
}

void TestDatabase::widen(const TableRow& row) {
    for (const auto& [column, value] : row.columns) {
        const auto* const found = std::ranges::find(numeric_columns, column, &NumericColumn::name);
        if (found == std::end(numeric_columns) || type_for(found->type, value) == found->type) continue;
        connection_->run(retype(connection_->dialect().name, row.table, column, type_for(found->type, value)));
        narrowing_.push_back(retype(connection_->dialect().name, row.table, column, found->type));
    }
}

void TestDatabase::declare(const ColumnType& column) {
    if (connection_->dialect().name != "sqlite") throw std::runtime_error("column types are given on SQLite alone");
    const Text table = from_utf8(column.table);
    const Text name = from_utf8(column.column);
    const RecordsetVariable declared =
        connection_->execute(u"select type from pragma_table_info('" + table + u"') where name='" + name + u"'");
    if (declared->eof()) throw std::runtime_error("there is no column " + column.table + "." + column.column);
    const Text drop = u"alter table " + table + u" drop column " + name;
    const Text add = u"alter table " + table + u" add column " + name + u" ";
    restoring_.push_back(drop);
    restoring_.push_back(add + to_text(declared->field(u"type")));
    connection_->run(drop);
    connection_->run(add + from_utf8(column.type));
}

std::vector<std::string> TestDatabase::expected_ledger(const Scenario& scenario) {
    const auto is_told = [](const std::string& line) { return line.find("Qty--") != std::string::npos; };
    if (connection_->dialect().name != "mariadb" || std::ranges::none_of(scenario.trace, is_told))
        return scenario.ledger;
    const auto oracle = make_sqlite_database();
    oracle->fill(scenario.given);
    for (const std::string& line : scenario.trace) {
        constexpr std::string_view execute = "execute ";
        if (line.starts_with(execute))
            oracle->connection().run(with_signs_apart(from_utf8(line.substr(execute.size()))));
    }
    return read_ledger(oracle->connection());
}

std::unique_ptr<TestDatabase> make_sqlite_database() { return std::make_unique<TestDatabase>("sqlite::memory:"); }

std::unique_ptr<TestDatabase> make_test_database() {
    const char* const connection_string = std::getenv("VANTLO_TEST_ODBC");
    if (connection_string == nullptr) return make_sqlite_database();
    return std::make_unique<TestDatabase>(connection_string);
}

}  // namespace vantlo::test
