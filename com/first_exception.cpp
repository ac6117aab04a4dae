// What the library does before it throws its first exception, so that hosts may load and free it as often as they like
// and have whatever else in their process.
//
// The compiler's run-time library takes 73 KB when the library is loaded, to throw from where there is no memory left. It
// gives them back to nobody but a checker of memory; here they go with the library.
//
// From the first throw on it stays loaded: the compiler's run-time library takes a thread slot of the process then, and
// handles and memory for each thread that throws, which it would not give back with the library. A process has 1088 slots.
//
// On 32-bit Windows a throw finds its way by tables that have to be registered. The compiler's start-up code would do so
// whenever the library is loaded, at the cost of such a slot, and in libgcc_s_dw2-1.dll if the process has that one,
// where the unwinder linked into this library does not look. So the tables are registered here, in the library's own.
//
// Source   libstdc++'s eh_alloc.cc; winpthreads' thread.c (mingw-w64 10); libgcc's cygming-crtbegin.c and unwind-dw2-fde.c
//          (GCC 12).
#include <windows.h>

#include <typeinfo>

#include "com/server.h"

namespace {

#ifdef __i386__

extern "C" {
// Of the compiler's own library, which has no header for them.
void __real___register_frame_info(const void* tables, void* registration);

// What the start-up code calls instead.
void __wrap___register_frame_info(const void*, void*) {}
void* __wrap___deregister_frame_info(const void*) { return nullptr; }

extern const IMAGE_DOS_HEADER __ImageBase;
extern const char vantlo_in_unwind_tables[];
}

// A place in the middle of the tables.
asm(".section .eh_frame,\"dr\"\n_vantlo_in_unwind_tables:\n.text\n");

/// Where the section of the library's image begins that a place lies in.
const void* section_around(const char* place) {
    const auto* const image = reinterpret_cast<const char*>(&__ImageBase);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(image + __ImageBase.e_lfanew);
    const auto* section = reinterpret_cast<const IMAGE_SECTION_HEADER*>(headers + 1);
    const auto offset = static_cast<DWORD>(place - image);
    while (offset - section->VirtualAddress >= section->Misc.VirtualSize) ++section;
    return image + section->VirtualAddress;
}

void register_unwind_tables() {
    static void* registration[8] = {};  // at least libgcc's struct object, which has six words
    __real___register_frame_info(section_around(vantlo_in_unwind_tables), registration);
}

#else

void register_unwind_tables() {}

#endif

BOOL CALLBACK prepare(INIT_ONCE*, void*, void**) {
    vantlo::server::stay_loaded();
    register_unwind_tables();
    return TRUE;
}

}  // namespace

namespace __gnu_cxx {
// Of the compiler's own library, which has no header for it.
void __freeres();
}  // namespace __gnu_cxx

void vantlo::server::free_throwing_memory() noexcept { __gnu_cxx::__freeres(); }

// The linker directs every throw of the library to the first of these, and the first one's call to the compiler's own.
extern "C" {
[[noreturn]] void __wrap___cxa_throw(void* exception, std::type_info* type, void (*destroy)(void*));
[[noreturn]] void __real___cxa_throw(void* exception, std::type_info* type, void (*destroy)(void*));

void __wrap___cxa_throw(void* exception, std::type_info* type, void (*destroy)(void*)) {
    static INIT_ONCE prepared = INIT_ONCE_STATIC_INIT;
    InitOnceExecuteOnce(&prepared, prepare, nullptr, nullptr);
    __real___cxa_throw(exception, type, destroy);
}
}
