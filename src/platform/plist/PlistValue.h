#pragma once

#include "platform/Date.h"

#include <concepts>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace stowhaven {

enum class PlistKind { Null, Boolean, Integer, Real, String, Data, Date, Array, Dictionary, Uid };

// One value of property-list data: what the device's preferences, its property-list files
// and keyed archives hold. A value is copied and compared as a whole, containers with
// everything in them. Null stands for the null object and, where useful, for "absent".
class PlistValue {
public:
    using Data = std::vector<std::uint8_t>;
    using Array = std::vector<PlistValue>;
    using Dictionary = std::map<std::string, PlistValue, std::less<>>;

    // Conversions are implicit so that containers can be written as literals:
    // PlistValue::Dictionary{{"SoundEnabled", true}, {"CurrentStorageType", 5}}.
    PlistValue() = default;
    PlistValue(bool value) : storage_(value) {}
    template <std::integral Integer>
    requires(!std::same_as<Integer, bool>) PlistValue(Integer value) : storage_(integerStorage(value)) {}
    template <std::floating_point Real>
    PlistValue(Real value) : storage_(static_cast<double>(value)) {}
    PlistValue(std::string value) : storage_(std::move(value)) {}
    PlistValue(std::string_view value) : storage_(std::string(value)) {}
    PlistValue(const char* value) : storage_(std::string(value)) {}
    PlistValue(Data value) : storage_(std::move(value)) {}
    PlistValue(Date value) : storage_(value) {}
    PlistValue(Array value) : storage_(std::move(value)) {}
    PlistValue(Dictionary value) : storage_(std::move(value)) {}

    static PlistValue data(std::string_view bytes) { return Data(bytes.begin(), bytes.end()); }
    // A reference to another object of a keyed archive.
    static PlistValue uid(std::uint64_t value);

    PlistKind kind() const;
    bool isNull() const { return kind() == PlistKind::Null; }
    bool isBoolean() const { return kind() == PlistKind::Boolean; }
    bool isInteger() const { return kind() == PlistKind::Integer; }
    bool isReal() const { return kind() == PlistKind::Real; }
    // Booleans, integers and reals: what the device keeps as number objects.
    bool isNumber() const { return isBoolean() || isInteger() || isReal(); }
    bool isString() const { return kind() == PlistKind::String; }
    bool isData() const { return kind() == PlistKind::Data; }
    bool isDate() const { return kind() == PlistKind::Date; }
    bool isArray() const { return kind() == PlistKind::Array; }
    bool isDictionary() const { return kind() == PlistKind::Dictionary; }
    bool isUid() const { return kind() == PlistKind::Uid; }

    // Each accessor answers nothing when the value is of another kind.
    std::optional<bool> asBoolean() const;
    // Nothing also for an unsigned integer above INT64_MAX.
    std::optional<std::int64_t> asInteger() const;
    // Nothing also for a negative integer.
    std::optional<std::uint64_t> asUnsignedInteger() const;
    std::optional<double> asReal() const;
    const std::string* asString() const { return std::get_if<std::string>(&storage_); }
    const Data* asData() const { return std::get_if<Data>(&storage_); }
    std::optional<Date> asDate() const;
    const Array* asArray() const { return std::get_if<Array>(&storage_); }
    Array* asArray() { return std::get_if<Array>(&storage_); }
    const Dictionary* asDictionary() const { return std::get_if<Dictionary>(&storage_); }
    Dictionary* asDictionary() { return std::get_if<Dictionary>(&storage_); }
    std::optional<std::uint64_t> asUid() const;

    // Any number converted as the device's number objects convert: booleans are 0 and 1,
    // reals lose their fraction (and saturate) on the way to an integer.
    std::optional<double> numberAsReal() const;
    std::optional<std::int64_t> numberAsInteger() const;

    // Same kind and same contents. Reals compare as doubles, so NaN equals nothing.
    bool operator==(const PlistValue& other) const = default;

    // One line for logs and test failures: {"key" = (1, 2.5, <00ff>); }.
    std::string description() const;

private:
    // Integers above INT64_MAX, which a binary property list can hold; every other
    // integer is kept as std::int64_t, so that equal numbers compare equal.
    struct LargeUnsigned {
        std::uint64_t value;
        bool operator==(const LargeUnsigned&) const = default;
    };
    struct Uid {
        std::uint64_t value;
        bool operator==(const Uid&) const = default;
    };
    using Storage = std::variant<std::monostate, bool, std::int64_t, LargeUnsigned, double, std::string, Data, Date,
                                 Array, Dictionary, Uid>;

    template <std::integral Integer>
    static Storage integerStorage(Integer value) {
        if constexpr (std::is_unsigned_v<Integer>) {
            constexpr auto kLargestSigned = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
            if (value > kLargestSigned) return LargeUnsigned{value};
        }
        return static_cast<std::int64_t>(value);
    }

    explicit PlistValue(Storage storage) : storage_(std::move(storage)) {}

    Storage storage_;
};

// The value under KEY, or nothing.
const PlistValue* valueForKey(const PlistValue::Dictionary& dictionary, std::string_view key);
// The text under KEY, or nothing when there is none or it is of another kind.
const std::string* stringForKey(const PlistValue::Dictionary& dictionary, std::string_view key);

}  // namespace stowhaven
