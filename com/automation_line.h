#pragma once

#include <ole2.h>

#include "ado/com/interface_pointer.h"
#include "component/member_table.h"
#include "posting/line.h"

namespace vantlo {

/// A host's line object, asked for its properties: through the interface that its parameter declares if it has that, by name
/// otherwise.
///
/// Source   a class that implements the interface early-bound answers no name, a script's object has names alone.
/// Errors   object_not_set for every property of a null object; what the object reports otherwise, as an automation
///          host sees it.
class AutomationLine final : public Line {
public:
    AutomationLine(IDispatch* object, LineType type) : object_(object), type_(type) {}

    Variant value(TextView name) override;

private:
    /// The object's declared interface, asked for with the first property; null if it has none.
    IDispatch* declared();
    [[nodiscard]] Variant value_by_name(TextView name) const;

    InterfacePointer<IDispatch> object_;
    LineType type_;
    InterfacePointer<IDispatch> declared_;
    bool is_asked_ = false;
};

}  // namespace vantlo
