#pragma once

#include <optional>

#include "automation/error.h"

namespace vantlo::tests {

/// The number of the failure that a call ends with; nothing if it returns.
template <typename Call>
std::optional<ErrorNumber> failure_of(Call&& call) {
    try {
        static_cast<void>(call());
    } catch (const Failure& failure) {
        return failure.number();
    }
    return std::nullopt;
}

}  // namespace vantlo::tests
