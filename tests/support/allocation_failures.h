#pragma once

namespace vantlo::test {

/// Which allocation of the calling thread fails. Only a program that links allocation_failures.cpp pays heed to it.
struct AllocationPlan {
    long countdown = 0;          ///< how many allocations still succeed before one fails; below 0: none fails
    bool and_all_after = false;  ///< whether all later ones fail too
    bool armed = false;
    bool has_failed = false;
};

AllocationPlan& allocation_plan();

/// Lets the harness allocate while the plan is armed: what it needs for its own records is not the component's.
class HarnessAllocations {
public:
    HarnessAllocations() : was_armed_(allocation_plan().armed) { allocation_plan().armed = false; }
    HarnessAllocations(const HarnessAllocations&) = delete;
    HarnessAllocations& operator=(const HarnessAllocations&) = delete;
    ~HarnessAllocations() { allocation_plan().armed = was_armed_; }

private:
    bool was_armed_;
};

}  // namespace vantlo::test
