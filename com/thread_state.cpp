#include "com/thread_state.h"

#include <objbase.h>

#include <atomic>
#include <new>

#include "com/server.h"

namespace vantlo::thread_state {

namespace {

struct ThreadCopy {
    ProjectState state;
    bool is_watched = false;
    ULARGE_INTEGER watch = {};  ///< what ends the watch
};

DWORD slot = TLS_OUT_OF_INDEXES;

/// The copies' memory. It goes with the library, so the copies of threads that are still running go with it too.
HANDLE heap = nullptr;

/// Where there is no memory even for a thread's own copy, calls that only fail from there on share this one.
ProjectState last_resort;

ThreadCopy* existing() noexcept { return static_cast<ThreadCopy*>(TlsGetValue(slot)); }

/// How many threads' apartments are watched, each with a reference to the library.
std::atomic<long> watched = 0;

/// References to the library that ended watches have left. A watch may end where its reference is the last one, which
/// would unload the code that is running; they wait for the next watch, or for a caller that keeps the library loaded.
std::atomic<long> spare_references = 0;

bool take_spare_reference() noexcept {
    long spare = spare_references;
    while (spare > 0 && !spare_references.compare_exchange_weak(spare, spare - 1)) {
    }
    return spare > 0;
}

void give_spare_references_back() noexcept {
    while (take_spare_reference()) server::remove_reference();
}

/// Is told when an apartment is about to be uninitialised. There is one for all threads, and it is never deleted.
class ApartmentWatch final : public IInitializeSpy {
public:
    static ApartmentWatch& instance() {
        static ApartmentWatch watch;
        return watch;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID identifier, void** object) override {
        if (object == nullptr) return E_POINTER;
        const bool is_known = identifier == IID_IUnknown || identifier == IID_IInitializeSpy;
        *object = is_known ? static_cast<IInitializeSpy*>(this) : nullptr;
        return is_known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE PreInitialize(DWORD, DWORD) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE PostInitialize(HRESULT result, DWORD, DWORD) override { return result; }
    HRESULT STDMETHODCALLTYPE PreUninitialize(DWORD times_initialized) override {
        if (times_initialized <= 1) reset();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE PostUninitialize(DWORD) override { return S_OK; }

private:
    ApartmentWatch() = default;
    ~ApartmentWatch() = default;
};

void begin_watch(ThreadCopy& copy) noexcept {
    if (!take_spare_reference() && !server::add_reference()) return;
    copy.is_watched = SUCCEEDED(CoRegisterInitializeSpy(&ApartmentWatch::instance(), &copy.watch));
    ++(copy.is_watched ? watched : spare_references);
}

/// The end of a watch but for taking it out of the system's list.
void mark_ended(ThreadCopy& copy) noexcept {
    copy.is_watched = false;
    --watched;
    ++spare_references;
}

void end_watch(ThreadCopy& copy) noexcept {
    CoRevokeInitializeSpy(copy.watch);
    mark_ended(copy);
}

}  // namespace

bool open() noexcept {
    slot = TlsAlloc();
    heap = HeapCreate(0, 0, 0);
    return slot != TLS_OUT_OF_INDEXES && heap != nullptr;
}

void close() noexcept {
    TlsFree(slot);
    HeapDestroy(heap);
}

bool prepare() noexcept {
    if (existing() != nullptr) return true;
    void* const memory = HeapAlloc(heap, 0, sizeof(ThreadCopy));
    if (memory == nullptr) return false;
    auto* const made = new (memory) ThreadCopy;
    if (TlsSetValue(slot, made)) return true;
    HeapFree(heap, 0, made);
    return false;
}

ProjectState& current() noexcept {
    // A host that runs a statement may look at the last error; the slot must not change it.
    const DWORD last_error = GetLastError();
    ProjectState& state = prepare() ? existing()->state : last_resort;
    SetLastError(last_error);
    return state;
}

void watch_apartment() noexcept {
    ThreadCopy* const copy = existing();
    if (copy == nullptr) return;
    const bool refers = copy->state.connection != nullptr;
    if (refers && !copy->is_watched) begin_watch(*copy);
    if (!refers && copy->is_watched) {
        end_watch(*copy);
        give_spare_references_back();
    }
}

void reset() noexcept {
    ThreadCopy* const copy = existing();
    if (copy == nullptr) return;
    copy->state.database_kind = DatabaseKind::other;
    set_project_connection(nullptr);
    if (copy->is_watched && copy->state.connection == nullptr) end_watch(*copy);
}

bool nothing_watched() noexcept {
    give_spare_references_back();
    return watched == 0;
}

void discard() noexcept {
    ThreadCopy* const copy = existing();
    if (copy == nullptr) return;
    // The system takes its own entry of the watch away with the thread.
    if (copy->is_watched) mark_ended(*copy);
    HeapFree(heap, 0, copy);
    TlsSetValue(slot, nullptr);
}

}  // namespace vantlo::thread_state
