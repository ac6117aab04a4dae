#pragma once

#include <ole2.h>

#include "ado/com/interface_pointer.h"
#include "posting/line.h"

namespace vantlo {

/// A host's line object: any automation object, asked for its properties by name.
///
/// Errors   object_not_set for every property of a null object; what the object reports otherwise, as an automation
///          host sees it.
class AutomationLine final : public Line {
public:
    explicit AutomationLine(IDispatch* object) : object_(object) {}

    Variant value(TextView name) override;

private:
    InterfacePointer<IDispatch> object_;
};

}  // namespace vantlo
