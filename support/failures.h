#pragma once

#include <string>

#include "automation/error.h"

namespace vantlo::test {

/// A failure as a test sees it: its number and its account; the number 0 if there was none.
struct Caught {
    ErrorNumber number = 0;
    std::string account;
};

/// Catches the Failure of a call.
template <typename Callable>
Caught caught(Callable&& call) {
    try {
        call();
    } catch (const Failure& failure) {
        return {failure.number(), failure.what()};
    }
    return {};
}

}  // namespace vantlo::test
