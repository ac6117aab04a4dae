#pragma once

#include <doctest/doctest.h>
#include <windows.h>

#include <array>
#include <vector>

#include "tests/support/com/automation_object.h"

namespace vantlo::test {

/// What a process holds, and loses to a library that keeps it.
struct ProcessUse {
    std::size_t heap_bytes = 0;  ///< of all blocks in all heaps
    std::size_t free_slots = 0;  ///< thread slots, of which a process has 1088
    DWORD handles = 0;
    long objects = 0;  ///< of the tests' own, which live as long as somebody refers to them

    static ProcessUse now() {
        ProcessUse use;
        std::vector<DWORD> taken;
        for (DWORD slot; (slot = TlsAlloc()) != TLS_OUT_OF_INDEXES;) taken.push_back(slot);
        for (const DWORD slot : taken) TlsFree(slot);
        use.free_slots = taken.size();
        taken = {};
        CHECK(GetProcessHandleCount(GetCurrentProcess(), &use.handles));
        use.objects = objects_alive;
        std::array<HANDLE, 64> heaps = {};
        const DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
        REQUIRE(count > 0);
        REQUIRE(count <= heaps.size());
        for (DWORD i = 0; i < count; ++i) use.heap_bytes += bytes_in(heaps[i]);
        return use;
    }

private:
    static std::size_t bytes_in(HANDLE heap) {
        std::size_t bytes = 0;
        HeapLock(heap);
        for (PROCESS_HEAP_ENTRY entry = {}; HeapWalk(heap, &entry);) {
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) bytes += entry.cbData;
        }
        HeapUnlock(heap);
        return bytes;
    }
};

/// Runs a host a thousand times. What the process holds afterwards is what it held after some first runs.
template <typename Host>
void check_thousand_runs_keep_nothing(const Host& host) {
    constexpr int first_runs = 100, runs = 1'000;
    for (int i = 0; i < first_runs; ++i) host();
    const ProcessUse before = ProcessUse::now();
    for (int i = 0; i < runs; ++i) host();
    const ProcessUse after = ProcessUse::now();
    MESSAGE(before.heap_bytes << " bytes before, " << after.heap_bytes << " after a thousand runs");
    CHECK(after.heap_bytes < before.heap_bytes + runs);  // less than a byte a run
    CHECK(after.free_slots == before.free_slots);
    CHECK(after.handles == before.handles);
    CHECK(after.objects == before.objects);
}

}  // namespace vantlo::test
