#pragma once

#include <string>
#include <vector>

#include "ado/native/native_connection.h"
#include "bills/schema.h"
#include "tool/commands/command.h"

namespace vantlo {

// What a database has and lacks of vantlo's own: for the commands that make it and remove it.

/// Vantlo's own tables, those that the database has apart from those that it lacks.
struct OwnTables {
    std::vector<OwnTable> present;
    std::vector<OwnTable> missing;
};

/// Errors   Failure.
OwnTables own_tables_of(NativeConnection& database);

/// A list for people. Example: `table SavedBill, table BillHistory`
class PartList {
public:
    explicit PartList(const CommonOptions& common) : common_(common) {}

    void add(const std::string& part);
    void add(const std::vector<OwnTable>& tables);

    [[nodiscard]] bool empty() const { return text_.empty(); }
    [[nodiscard]] const std::string& text() const { return text_; }

private:
    const CommonOptions& common_;
    std::string text_;
};

}  // namespace vantlo
