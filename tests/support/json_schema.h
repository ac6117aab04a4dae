#pragma once

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

namespace vantlo::test {

/// A JSON schema, as far as the schemas of docs/ go. Errors: std::runtime_error for a keyword that it does not know, so that
/// none is passed over.
class JsonSchema {
public:
    explicit JsonSchema(const std::string& file) {
        std::ifstream stream(file);
        if (!stream) throw std::runtime_error("there is no " + file);
        root_ = nlohmann::json::parse(stream);
    }

    /// What is wrong with a document, and where; empty if nothing is.
    [[nodiscard]] std::string fault_of(const nlohmann::json& document) const { return fault(root_, document, ""); }

private:
    using Json = nlohmann::json;

    static bool is_of(const std::string& type, const Json& value) {
        if (type == "integer") return value.is_number_integer();
        if (type == "number") return value.is_number();
        return type == value.type_name();
    }

    [[nodiscard]] std::string fault(const Json& schema, const Json& value, const std::string& place) const {
        for (const auto& [keyword, rule] : schema.items()) {
            const std::string found = fault(keyword, rule, schema, value, place);
            if (!found.empty()) return found;
        }
        return {};
    }

    [[nodiscard]] std::string fault(const std::string& keyword, const Json& rule, const Json& schema, const Json& value,
                                    const std::string& place) const {
        const std::string fails = place + ": " + keyword + " " + value.dump();
        if (keyword == "$ref")
            return fault(root_.at(Json::json_pointer(rule.get<std::string>().substr(1))), value, place);
        if (keyword == "type") {
            const Json types = rule.is_array() ? rule : Json::array({rule});
            return std::ranges::any_of(types, [&](const Json& type) { return is_of(type, value); }) ? "" : fails;
        }
        if (keyword == "enum") return std::ranges::count(rule, value) > 0 ? "" : fails;
        if (keyword == "minLength") return value.get<std::string>().size() >= rule ? "" : fails;
        if (keyword == "minItems") return value.size() >= rule ? "" : fails;
        if (keyword == "required") {
            return std::ranges::all_of(rule, [&](const Json& name) { return value.contains(name.get<std::string>()); })
                       ? ""
                       : fails;
        }
        if (keyword == "properties") return fault_of_properties(rule, schema, value, place);
        if (keyword == "items") {
            for (const Json& item : value) {
                const std::string found = fault(rule, item, place + "[]");
                if (!found.empty()) return found;
            }
            return {};
        }
        constexpr const char* without_rule[] = {"$schema", "title", "description", "definitions",
                                                "additionalProperties"};
        if (std::ranges::count(without_rule, keyword) == 0) throw std::runtime_error("unknown keyword " + keyword);
        return {};
    }

    [[nodiscard]] std::string fault_of_properties(const Json& rules, const Json& schema, const Json& value,
                                                  const std::string& place) const {
        for (const auto& [name, member] : value.items()) {
            const std::string where = place + "." + name;
            if (!rules.contains(name)) {
                if (schema.value("additionalProperties", true)) continue;
                return where + " is not in the schema";
            }
            const std::string found = fault(rules.at(name), member, where);
            if (!found.empty()) return found;
        }
        return {};
    }

    Json root_;
};

}  // namespace vantlo::test
