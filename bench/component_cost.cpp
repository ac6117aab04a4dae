// The component's own cost without a database: how many instructions and allocations one posted line takes.
//
// Usage: component_cost LINES      posts so many two-warehouse lines on a connection that answers at once, and prints
// the allocations per line. Instructions are counted by running it under callgrind with two different LINES.

#include <cstdio>
#include <cstdlib>
#include <new>

#include "bench/instant_database.h"
#include "component/inventory_class.h"
#include "dataaccess/shell_hooks.h"

namespace {

long allocations = 0;

}  // namespace

void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

using namespace vantlo;
using namespace vantlo::bench;

RecordsetVariable create_instant() { return std::make_unique<InstantRecordset>(); }

void show_nothing(const char16_t*, const char16_t*, std::int32_t) noexcept {}

ProjectState& instant_state() noexcept {
    static ProjectState state;
    return state;
}

}  // namespace

int main(int count, char** arguments) {
    const long lines = count == 2 ? std::atol(arguments[1]) : 0;
    if (lines <= 0) {
        std::fputs("Usage: component_cost LINES\n", stderr);
        return 2;
    }
    set_shell_hooks({create_instant, show_nothing, instant_state});
    InstantConnection connection;
    Inventory_Class object;
    object.set_ADOConn(&connection);
    InstantLine line;
    const Member& member = *find_method(u"AddInventory_Db");
    const Argument argument(line);
    allocations = 0;
    for (long i = 0; i < lines; ++i) {
        if (object.call(member, std::span(&argument, 1)) != 0) return 1;
    }
    std::printf("%.2f allocations a line\n", static_cast<double>(allocations) / static_cast<double>(lines));
    object.set_ADOConn(nullptr);
}
