#pragma once

#include <cstdlib>
#include <iostream>
#include <string>

namespace vantlo::fuzz {

/// Ends the process, which is how a fuzzer says that an input has broken what must hold.
inline void require(bool holds, const std::string& what) {
    if (holds) return;
    std::cerr << "broken: " << what << '\n';
    std::abort();
}

}  // namespace vantlo::fuzz
