#pragma once

#include <functional>

#include "ado/com/ado_interfaces.h"
#include "tests/support/com/automation_object.h"

namespace vantlo::test {

/// A host's connection that nothing is posted through; it says when a reference to it is released.
class ReleasedConnection final : public AutomationObject<ReleasedConnection, IDispatch> {
public:
    explicit ReleasedConnection(std::function<void()> on_release) : on_release_(std::move(on_release)) {}

    static std::span<const IID> identifiers() { return {&connection_identifier.first, 1}; }
    static std::span<const ScriptMember<ReleasedConnection>> script_members() { return {}; }

    ULONG STDMETHODCALLTYPE Release() override {
        on_release_();
        return AutomationObject::Release();
    }

private:
    ~ReleasedConnection() override = default;

    std::function<void()> on_release_;
};

}  // namespace vantlo::test
