#pragma once

#include <memory>

struct sqlite3;

namespace vantlo {

struct SqliteCloser {
    void operator()(sqlite3* database) const noexcept;
};

/// An open connection of the engine's own, which ends with it.
using SqliteHandle = std::unique_ptr<sqlite3, SqliteCloser>;

}  // namespace vantlo
