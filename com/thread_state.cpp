#include "com/thread_state.h"

#include <windows.h>

#include <new>

namespace vantlo::thread_state {

namespace {

DWORD slot = TLS_OUT_OF_INDEXES;

/// Where there is no memory even for a thread's own copy, calls that only fail from there on share this one.
ProjectState last_resort;

ProjectState* existing() noexcept { return static_cast<ProjectState*>(TlsGetValue(slot)); }

}  // namespace

bool open() noexcept {
    slot = TlsAlloc();
    return slot != TLS_OUT_OF_INDEXES;
}

void close() noexcept {
    discard();
    TlsFree(slot);
}

bool prepare() noexcept {
    if (existing() != nullptr) return true;
    auto* const made = new (std::nothrow) ProjectState;
    if (made != nullptr && TlsSetValue(slot, made)) return true;
    delete made;
    return false;
}

ProjectState& current() noexcept {
    // A host that runs a statement may look at the last error; the slot must not change it.
    const DWORD last_error = GetLastError();
    ProjectState& state = prepare() ? *existing() : last_resort;
    SetLastError(last_error);
    return state;
}

void reset() noexcept {
    if (existing() == nullptr) return;
    set_project_connection(nullptr);
    *existing() = {};
}

void discard() noexcept {
    delete existing();
    TlsSetValue(slot, nullptr);
}

}  // namespace vantlo::thread_state
