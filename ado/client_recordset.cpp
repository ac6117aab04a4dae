#include "ado/client_recordset.h"

#include <algorithm>
#include <utility>

#include "automation/error.h"

namespace vantlo {

namespace {

constexpr std::int32_t state_closed = 0;
constexpr std::int32_t state_open = 1;

class ClientRecordset final : public Recordset {
public:
    ClientRecordset() = default;
    ClientRecordset(ResultTable result, TextView statement)
        : table_(std::move(result)), statement_(statement), is_open_(table_.yields_rows) {}

    void set_active_connection(Connection* connection) override { connection_ = ConnectionReference(connection); }
    void set_cursor_location(std::int32_t location) override { cursor_location_ = location; }
    void set_cursor_type(std::int32_t type) override { cursor_type_ = type; }

    void open(TextView source) override {
        if (state() != state_closed) throw Failure(error::object_open);
        if (connection_.get() == nullptr) throw Failure(error::no_connection);
        executed_ = connection_.get()->execute(source);
    }

    bool eof() override {
        if (executed_) return executed_->eof();
        require_open();
        return is_at_end();
    }

    void move_next() override {
        if (executed_) return executed_->move_next();
        require_open();
        if (is_at_end()) throw Failure(error::no_current_row);
        ++row_;
    }

    Variant field(TextView name) override {
        if (executed_) return executed_->field(name);
        require_open();
        const auto column = std::ranges::find_if(
            table_.columns, [name](const Text& column_name) { return equal_ignoring_case(column_name, name); });
        if (column == table_.columns.end()) {
            const std::string result = statement_.empty() ? "" : " in the result of: " + to_utf8(statement_);
            throw Failure(error::no_such_item, "no field " + to_utf8(name) + result);
        }
        if (is_at_end()) throw Failure(error::no_current_row);
        return table_.rows[row_][static_cast<std::size_t>(column - table_.columns.begin())];
    }

    std::int32_t state() override {
        if (executed_) return executed_->state();
        return is_open_ ? state_open : state_closed;
    }

    void close() override {
        if (executed_) return executed_->close();
        require_open();
        is_open_ = false;
        table_ = {};
    }

private:
    void require_open() const {
        if (!is_open_) throw Failure(error::object_closed);
    }
    [[nodiscard]] bool is_at_end() const { return row_ == table_.rows.size(); }

    ConnectionReference connection_;
    std::int32_t cursor_location_ = 0;
    std::int32_t cursor_type_ = 0;

    // After `open`: the recordset that the connection's `execute` returned, so that a connection that wraps another one sees
    // each call. Without `open`, the rows are in table_.
    RecordsetVariable executed_;
    ResultTable table_;
    Text statement_;
    std::size_t row_ = 0;
    bool is_open_ = false;
};

}  // namespace

RecordsetVariable make_client_recordset() { return std::make_unique<ClientRecordset>(); }

RecordsetVariable make_client_recordset(ResultTable result, TextView statement) {
    return std::make_unique<ClientRecordset>(std::move(result), statement);
}

}  // namespace vantlo
