#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "component/passed_arguments.h"

// Automation calls out of bytes, and what the rules of such calls make of them. The values lie in memory as a host's do,
// each block as large as its type demands and no larger, so that a read beyond it shows.

namespace vantlo::test {

/// A call as hosts get it wrong: any member, counts that contradict each other, names that are none or are given twice,
/// references to nothing, to one another and to themselves, types that no value has.
///
/// Its bytes: the member, the counts' oddities, how many values and how many names; a byte a name; four bytes a value:
/// type, target, and two bytes of content. Missing bytes are 0.
class DispatchCall {
public:
    /// `object` is what every object of the call is; it is handed on, never touched.
    DispatchCall(std::span<const std::uint8_t> bytes, void* object) : rest_(bytes), object_(object) {
        member_ = &member_table()[next() % member_table().size()];
        flags_ = next();
        const std::uint8_t oddities = next();
        value_count_ = next() % 8;
        name_count_ = next() % 8;
        names_.resize(name_count_);
        for (std::int32_t& name : names_) name = name_of(next());
        arguments_ = std::make_unique<DispatchValue[]>(value_count_);
        for (std::uint32_t i = 0; i < value_count_; ++i) places_.push_back(&arguments_[i]);
        for (DispatchValue& variable : variables_) places_.push_back(&variable);
        for (std::size_t i = 0; i < places_.size(); ++i) nodes_.push_back(next_node());
        for (std::size_t i = 0; i < places_.size(); ++i) *places_[i] = value_of(nodes_[i]);
        passed_ = {arguments_.get(), names_.data(), value_count_, name_count_};
        if ((oddities & 0x1F) == 1) passed_.values = nullptr;
        if ((oddities & 0x1F) == 2) passed_.names = nullptr;
        if ((oddities & 0x1F) == 3) passed_.value_count = 0xFFFFFFFF;
        if ((oddities & 0x1F) == 4) passed_.name_count = 0xFFFFFFFF;
    }
    DispatchCall(const DispatchCall&) = delete;
    DispatchCall& operator=(const DispatchCall&) = delete;

    [[nodiscard]] const Member& member() const { return *member_; }
    [[nodiscard]] std::uint16_t flags() const { return flags_; }
    [[nodiscard]] const PassedArguments& passed() const { return passed_; }

    /// What the rules make of a value: nothing and the error's number, or the value itself.
    struct Meant {
        ErrorNumber number = 0;
        DispatchValue value;
    };

    [[nodiscard]] Meant meant_by(std::size_t place) const {
        std::size_t node = place;
        for (int references = 0; has_flag(nodes_[node].type, DispatchType::reference_flag); ++references) {
            const DispatchType type = without_flag(nodes_[node].type, DispatchType::reference_flag);
            if (type == DispatchType::variant) {
                if (references == most_references) return {error::bad_type, {}};
                if (nodes_[node].is_null) return {error::type_mismatch, {}};
                node = nodes_[node].target;
                continue;
            }
            const bool is_array = has_flag(type, DispatchType::array_flag);
            if (references == most_references || (!is_array && size_of(type) == 0)) return {error::bad_type, {}};
            if (nodes_[node].is_null || is_array) return {error::type_mismatch, {}};
            return {0, plain_value(type, nodes_[node])};
        }
        const DispatchType type = nodes_[node].type;
        if (has_flag(type, DispatchType::array_flag)) return {error::type_mismatch, {}};
        const bool has_value = type == DispatchType::empty || type == DispatchType::null || size_of(type) != 0;
        if (!has_value) return {error::bad_type, {}};
        return {0, plain_value(type, nodes_[node])};
    }

    /// How many bytes of content a value of the type has; 0 for one that is none or has none.
    static std::size_t size_of(DispatchType type) {
        switch (type) {
            case DispatchType::int8:
            case DispatchType::uint8: return 1;
            case DispatchType::int16:
            case DispatchType::uint16:
            case DispatchType::boolean: return 2;
            case DispatchType::int32:
            case DispatchType::uint32:
            case DispatchType::machine_int:
            case DispatchType::machine_uint:
            case DispatchType::single:
            case DispatchType::error: return 4;
            case DispatchType::int64:
            case DispatchType::uint64:
            case DispatchType::real:
            case DispatchType::currency:
            case DispatchType::date: return 8;
            case DispatchType::decimal: return 16;
            case DispatchType::text:
            case DispatchType::object:
            case DispatchType::unknown_object: return sizeof(void*);
            default: return 0;
        }
    }

private:
    static constexpr int most_references = 8;

    struct Node {
        DispatchType type;
        bool is_null;
        std::size_t target;
        std::uint8_t content[2];
    };

    std::uint8_t next() {
        if (rest_.empty()) return 0;
        const std::uint8_t byte = rest_.front();
        rest_ = rest_.subspan(1);
        return byte;
    }

    /// Small numbers are parameters; the others are none, the name of a property's value among them.
    static std::int32_t name_of(std::uint8_t byte) {
        constexpr std::int32_t odd_names[] = {-3, -1, INT32_MIN, INT32_MAX, 0x10000, 6};
        if (byte % 12 < 6) return byte % 12;
        return odd_names[byte % 12 - 6];
    }

    Node next_node() {
        constexpr std::uint16_t types[] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9, 10, 11, 12, 13, 14, 16,
                                           17, 18, 19, 20, 21, 22, 23, 12, 12, 8, 9,  15, 24, 36, 72, 0x1008};
        const std::uint8_t selector = next();
        auto type = static_cast<DispatchType>(types[selector % 32]);
        if ((selector & 0x40) != 0) type = type | DispatchType::reference_flag;
        if ((selector & 0xA0) == 0xA0) type = type | DispatchType::array_flag;
        const std::uint8_t target = next();
        const std::uint8_t low = next(), high = next();
        return {type, target >= 0xF0, target % places_.size(), {low, high}};
    }

    /// A value's content, without references, as its node's bytes tell.
    DispatchValue plain_value(DispatchType type, const Node& node) const {
        DispatchValue value;
        if (type == DispatchType::decimal) {
            std::memset(static_cast<void*>(&value), node.content[0], 16);
            value.reserved[0] = 0;  // neither a scale nor a sign
        } else if (type == DispatchType::text) {
            value.write(node.content[0] < 0x40 ? nullptr : text());
        } else if (is_object(type)) {
            value.write(node.content[0] < 0x40 ? nullptr : object_);
        } else if (type == DispatchType::error) {
            value.write(node.content[0] % 2 == 1 ? std::uint32_t{0x80020004} : std::uint32_t{node.content[0]});
        } else {
            for (std::size_t i = 0; i < size_of(type); ++i) value.content[i] = std::byte{node.content[i % 2]};
        }
        value.type = type;
        return value;
    }

    DispatchValue value_of(const Node& node) {
        if (!has_flag(node.type, DispatchType::reference_flag)) return plain_value(node.type, node);
        const DispatchType type = without_flag(node.type, DispatchType::reference_flag);
        DispatchValue value;
        value.type = node.type;
        if (node.is_null) return value;
        value.write<const void*>(type == DispatchType::variant ? places_[node.target] : block(type, node));
        return value;
    }

    /// What a typed reference points to: as many bytes as its type has.
    const void* block(DispatchType type, const Node& node) {
        const bool is_array = has_flag(type, DispatchType::array_flag);
        const std::size_t size = is_array ? sizeof(void*) : size_of(type);
        blocks_.push_back(std::make_unique<std::byte[]>(size));
        const DispatchValue value = plain_value(is_array ? DispatchType::empty : type, node);
        const auto* const begin =
            type == DispatchType::decimal ? reinterpret_cast<const std::byte*>(&value) : value.content;
        std::memcpy(blocks_.back().get(), begin, size);
        return blocks_.back().get();
    }

    /// A text as automation passes it: its length in bytes, its characters, and a null behind them.
    static const void* text() {
        static constexpr struct {
            std::uint32_t length = 4;
            char16_t characters[3] = {u'1', u'2', 0};
        } held;
        return held.characters;
    }

    std::span<const std::uint8_t> rest_;
    void* object_;
    const Member* member_;
    std::uint16_t flags_;
    std::uint32_t value_count_;
    std::uint32_t name_count_;
    std::vector<std::int32_t> names_;
    std::unique_ptr<DispatchValue[]> arguments_;
    std::array<DispatchValue, 6> variables_;
    std::vector<DispatchValue*> places_;
    std::vector<Node> nodes_;
    std::deque<std::unique_ptr<std::byte[]>> blocks_;
    PassedArguments passed_;
};

/// What the rules make of a call's arguments: a misuse, or the place of each parameter's argument.
struct ExpectedArguments {
    std::optional<Misuse> misuse;
    std::vector<std::optional<std::uint32_t>> places;
};

/// What is wrong with the counts and the names of a call's arguments.
inline std::optional<Misuse> misuse_of_names(const PassedArguments& passed, std::size_t parameter_count) {
    if (passed.value_count > parameter_count) return Misuse{error::wrong_argument_count, 0};
    if (passed.name_count > passed.value_count) return Misuse{error::wrong_argument_count, 0};
    if (passed.values == nullptr && passed.value_count > 0) return Misuse{error::invalid_call, 0};
    if (passed.names == nullptr && passed.name_count > 0) return Misuse{error::invalid_call, 0};
    const std::uint32_t unnamed = passed.value_count - passed.name_count;
    for (std::uint32_t i = 0; i < passed.name_count; ++i) {
        const std::int64_t name = passed.names[i];
        bool is_taken = name < std::int64_t{unnamed};  // negative ones as well
        for (std::uint32_t before = 0; before < i; ++before) is_taken = is_taken || passed.names[before] == name;
        if (is_taken || name >= static_cast<std::int64_t>(parameter_count)) {
            return Misuse{error::named_argument_not_found, i};
        }
    }
    return std::nullopt;
}

/// The place of a parameter's argument, named or not; nothing if the call has none for it.
inline std::optional<std::uint32_t> place_of(std::size_t parameter, const PassedArguments& passed) {
    std::optional<std::uint32_t> place;
    const std::uint32_t unnamed = passed.value_count - passed.name_count;
    if (parameter < unnamed) place = passed.value_count - 1 - static_cast<std::uint32_t>(parameter);
    for (std::uint32_t i = 0; i < passed.name_count; ++i) {
        if (passed.names[i] == static_cast<std::int32_t>(parameter)) place = i;
    }
    return place;
}

/// Whether a value is an argument of a parameter's type; a method converts it later, where it can be.
inline bool fits(const DispatchValue& value, const Parameter& parameter) {
    if (parameter.type == ParameterType::line) return is_object(value.type);
    if (value.type == DispatchType::null) return false;
    return !is_object(value.type) || value.read<const void*>() != nullptr;
}

/// A method's call, by the rules as automation's documents give them, one parameter at a time.
inline ExpectedArguments expected_arguments(const DispatchCall& call) {
    const std::span<const Parameter> parameters = call.member().parameters();
    if (const std::optional<Misuse> misuse = misuse_of_names(call.passed(), parameters.size())) return {misuse, {}};
    const auto misused = [](ErrorNumber number, std::uint32_t place = 0) {
        return ExpectedArguments{Misuse{number, place}, {}};
    };
    ExpectedArguments expected;
    for (std::size_t p = 0; p < parameters.size(); ++p) {
        const std::optional<std::uint32_t> place = expected.places.emplace_back(place_of(p, call.passed()));
        if (!place && !parameters[p].optional) return misused(error::wrong_argument_count);
        if (!place) continue;
        const DispatchCall::Meant meant = call.meant_by(*place);
        if (meant.number != 0) return misused(meant.number, *place);
        const bool is_left_out =
            meant.value.type == DispatchType::error && meant.value.read<std::uint32_t>() == 0x80020004;
        if (is_left_out && !parameters[p].optional) return misused(error::argument_not_optional, *place);
        if (!is_left_out && !fits(meant.value, parameters[p])) return misused(error::type_mismatch, *place);
        if (is_left_out) expected.places.back() = std::nullopt;
    }
    return expected;
}

/// What setting a property to the call's value gives. A misuse, or the value.
inline DispatchCall::Meant expected_assignment(const DispatchCall& call) {
    const PassedArguments& passed = call.passed();
    if (passed.value_count != 1 || passed.name_count > 1) return {error::wrong_argument_count, {}};
    if (passed.values == nullptr) return {error::invalid_call, {}};
    if (passed.name_count == 1 && passed.names == nullptr) return {error::invalid_call, {}};
    if (passed.name_count == 1 && passed.names[0] != -3) return {error::named_argument_not_found, {}};
    return call.meant_by(0);
}

}  // namespace vantlo::test
