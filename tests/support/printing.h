#pragma once

// How doctest prints the value types of automation/ when a check fails.

#include <doctest/doctest.h>

#include "automation/currency.h"
#include "automation/date.h"
#include "automation/number_text.h"
#include "automation/text.h"
#include "automation/variant.h"

namespace doctest {

template <>
struct StringMaker<vantlo::Text> {
    static String convert(const vantlo::Text& text) { return "\"" + String(vantlo::to_utf8(text).c_str()) + "\""; }
};

template <>
struct StringMaker<vantlo::TextView> {
    static String convert(vantlo::TextView text) { return StringMaker<vantlo::Text>::convert(vantlo::Text(text)); }
};

template <>
struct StringMaker<vantlo::Currency> {
    static String convert(vantlo::Currency value) {
        return "Currency " + String(vantlo::to_utf8(vantlo::number_text(value)).c_str());
    }
};

template <>
struct StringMaker<vantlo::Date> {
    static String convert(vantlo::Date date) { return "Date " + toString(date.days); }
};

template <>
struct StringMaker<vantlo::Variant> {
    static String convert(const vantlo::Variant& variant) {
        // The index tells the types apart: two values of one text, such as Integer 1 and Long 1, are not equal.
        const String type = "Variant #" + toString(variant.value().index()) + " ";
        if (variant.is<vantlo::Null>() || variant.is<vantlo::Other>()) return type;
        return type + StringMaker<vantlo::Text>::convert(vantlo::to_text(variant));
    }
};

}  // namespace doctest
