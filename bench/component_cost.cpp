// The component's own cost without a database: how many instructions and allocations one posted line takes.
//
// Usage: component_cost LINES      posts so many two-warehouse lines on a connection that answers at once, and prints
// the allocations per line. Instructions are counted by running it under callgrind with two different LINES.

#include <cstdio>
#include <cstdlib>
#include <new>

#include "component/inventory_class.h"
#include "dataaccess/platform.h"

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

/// A row that every look-up finds: the ledger row exists and the unit holds 12.
class InstantRecordset final : public Recordset {
public:
    void set_active_connection(Connection*) override {}
    void set_cursor_location(std::int32_t) override {}
    void set_cursor_type(std::int32_t) override {}
    void open(TextView) override {}
    bool eof() override { return false; }
    void move_next() override {}
    Variant field(TextView) override { return Currency::from_whole(12); }
    std::int32_t state() override { return 0; }
    void close() override {}

    // Its memory is not the component's: one recordset serves all calls.
    static void* operator new(std::size_t) { return storage; }
    static void operator delete(void*) noexcept {}

private:
    alignas(std::max_align_t) static char storage[64];
};
alignas(std::max_align_t) char InstantRecordset::storage[64];

class InstantConnection final : public Connection {
public:
    void add_reference() noexcept override {}
    void release() noexcept override {}
    RecordsetVariable execute(TextView) override { return std::make_unique<InstantRecordset>(); }
};

/// A line whose values stand ready, told apart by a name's first and last letters: what it costs is not the component's.
class InstantLine final : public Line {
public:
    Variant value(TextView name) override {
        switch (name.front()) {
            case u'G': return gid_;
            case u'U': return unit_;
            case u'A': return quantity_;
            case u'R': return receiver_;
            case u'S': return supplier_;
            default: return name.back() == u'1' ? model1_ : model2_;
        }
    }

private:
    Variant gid_ = u"G0017", unit_ = u"箱", quantity_ = 2.5F, receiver_ = u"W01", supplier_ = u"W02", model1_ = u"黑色",
            model2_ = u"128G";
};

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
    set_platform({create_instant, show_nothing, instant_state});
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
