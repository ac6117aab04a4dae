#include "tests/support/allocation_failures.h"

#include <cstddef>
#include <cstdlib>
#include <new>

// Replaces the program's allocation, so that the plan's allocation fails.

namespace {

bool fails_now() {
    vantlo::test::AllocationPlan& plan = vantlo::test::allocation_plan();
    if (!plan.armed || (plan.has_failed && !plan.and_all_after)) return false;
    if (plan.has_failed || plan.countdown-- == 0) plan.has_failed = true;
    return plan.has_failed;
}

}  // namespace

void* operator new(std::size_t size) {
    if (fails_now()) throw std::bad_alloc();
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
