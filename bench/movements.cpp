#include "bench/movements.h"

#include <fmt/format.h>

#include <stdexcept>

#include "ado/native/statement_text.h"
#include "bills/schema.h"

namespace vantlo::bench {

namespace {

std::string goods_id(std::size_t number) { return fmt::format("G{:04}", number); }

}  // namespace

std::vector<Record> movements(std::size_t count, std::size_t goods, std::size_t first) {
    std::vector<Record> lines;
    lines.reserve(count);
    for (std::size_t i = first; i < first + count; ++i) {
        const std::size_t model = i / goods % 8;
        Record& line = lines.emplace_back();
        line.set(u"Receiver", Text(u"W01"));
        line.set(u"Supplier", Text(u"W02"));
        line.set(u"Gid", from_utf8(goods_id(i % goods)));
        line.set(u"Model1", Text(model % 2 == 0 ? u"曜石黑" : u"冰川白"));
        line.set(u"Model2", from_utf8(fmt::format("{}G", 64U << (model / 2))));
        line.set(u"Class", Text(u"手机"));
        line.set(u"Unit", Text(u"箱"));
        line.set(u"Actualqty", 0.25F * static_cast<float>(1 + i % 40));
        line.set(u"Remarks", Text());
    }
    return lines;
}

std::vector<std::string> shop_statements(const Dialect& dialect, std::size_t goods) {
    std::vector<std::string> statements;
    for (const Text& statement : statements_of(schema_for(dialect.name))) statements.push_back(to_utf8(statement));
    statements.push_back("delete from GoodsUnit");
    for (std::size_t i = 0; i < goods; ++i) {
        statements.push_back(fmt::format("insert into GoodsUnit values('{}','箱',12)", goods_id(i)));
    }
    return statements;
}

void run_all(NativeConnection& database, const std::vector<std::string>& statements) {
    database.begin();
    for (const std::string& statement : statements) database.run(from_utf8(statement));
    database.commit();
}

Poster::Poster(Connection& connection) : member_(*find_method(u"AddInventory_Db")) {
    component_.set_ADOConn(&connection);
}

Poster::~Poster() { component_.set_ADOConn(nullptr); }

void Poster::post(const Record& line) {
    RecordLine object(line, nullptr);
    const Argument argument(object);
    const std::int32_t result = component_.call(member_, std::span(&argument, 1));
    if (result != 0) throw std::runtime_error(fmt::format("the posting returned {}", result));
}

}  // namespace vantlo::bench
