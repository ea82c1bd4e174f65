#pragma once

#include "archive/Codable.h"
#include "platform/plist/PlistValue.h"

#include <concepts>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

namespace stowhaven {

// One value of a keyed archive's object graph: nil, a property-list leaf (boolean, integer,
// real, string, data, date), an array or a dictionary of further values, or a model object.
// Strings, data, arrays and dictionaries also say whether they are the mutable kind, which
// the archive writes under Foundation's NSMutable* class names.
//
// Nil is written as nil under a key and as the null object (NSNull) inside an array or a
// dictionary, which can't hold nil; both read back as nil.
class ArchiveValue {
public:
    using Array = std::vector<ArchiveValue>;
    using Dictionary = std::map<std::string, ArchiveValue, std::less<>>;
    using Object = std::shared_ptr<Codable>;

    ArchiveValue() = default;
    // Property-list arrays and dictionaries become immutable containers of ArchiveValues.
    ArchiveValue(PlistValue value);
    // Anything a PlistValue is made from: ArchiveValue::Array{"text", 1, 2.5, Date(0)}.
    template <typename T>
        requires std::constructible_from<PlistValue, T> && (!std::same_as<std::remove_cvref_t<T>, PlistValue>) &&
                 (!std::same_as<std::remove_cvref_t<T>, ArchiveValue>)
    ArchiveValue(T&& value) : ArchiveValue(PlistValue(std::forward<T>(value))) {}
    // An absent optional is nil.
    template <typename T>
    ArchiveValue(const std::optional<T>& value) : ArchiveValue(value ? ArchiveValue(*value) : ArchiveValue()) {}
    ArchiveValue(Array elements) : storage_(std::move(elements)) {}
    ArchiveValue(Dictionary entries) : storage_(std::move(entries)) {}
    // A null pointer is nil.
    template <std::derived_from<Codable> T>
    ArchiveValue(std::shared_ptr<T> object) {
        if (object) storage_ = Object(std::move(object));
    }

    static ArchiveValue mutableString(std::string text);
    static ArchiveValue mutableData(PlistValue::Data bytes);
    static ArchiveValue mutableArray(Array elements);
    static ArchiveValue mutableDictionary(Dictionary entries);

    // The elements of an array of model objects, for either kind of array.
    template <std::derived_from<Codable> T>
    static Array arrayOf(const std::vector<std::shared_ptr<T>>& objects) {
        return Array(objects.begin(), objects.end());
    }

    bool isNull() const;
    bool isNumber() const;
    bool isString() const;
    bool isData() const;
    bool isDate() const;
    bool isArray() const { return std::holds_alternative<Array>(storage_); }
    bool isDictionary() const { return std::holds_alternative<Dictionary>(storage_); }
    bool isObject() const { return std::holds_alternative<Object>(storage_); }
    bool isMutable() const { return mutable_; }

    // Each accessor answers nothing when the value is of another kind.
    // Nil and the property-list leaves.
    const PlistValue* asLeaf() const { return std::get_if<PlistValue>(&storage_); }
    const std::string* asString() const;
    const PlistValue::Data* asData() const;
    std::optional<Date> asDate() const;
    const Array* asArray() const { return std::get_if<Array>(&storage_); }
    const Dictionary* asDictionary() const { return std::get_if<Dictionary>(&storage_); }
    const Object* asObject() const { return std::get_if<Object>(&storage_); }
    // The model object if it is a T.
    template <std::derived_from<Codable> T>
    std::shared_ptr<T> object() const {
        const Object* object = asObject();
        return object ? std::dynamic_pointer_cast<T>(*object) : nullptr;
    }

    // The value as property-list data, nil as a null; nothing when a model object is inside.
    std::optional<PlistValue> plist() const;

    // Same kind, same contents and same mutability; model objects are compared by identity.
    bool operator==(const ArchiveValue& other) const = default;

private:
    std::variant<PlistValue, Array, Dictionary, Object> storage_;
    bool mutable_ = false;
};

}  // namespace stowhaven
