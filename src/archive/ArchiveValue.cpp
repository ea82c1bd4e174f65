#include "archive/ArchiveValue.h"

namespace stowhaven {

ArchiveValue::ArchiveValue(PlistValue value) {
    if (const auto* elements = value.asArray()) {
        storage_ = Array(elements->begin(), elements->end());
    } else if (const auto* entries = value.asDictionary()) {
        Dictionary converted;
        for (const auto& [key, element] : *entries) converted.emplace_hint(converted.end(), key, element);
        storage_ = std::move(converted);
    } else {
        storage_ = std::move(value);
    }
}

ArchiveValue ArchiveValue::mutableString(std::string text) {
    ArchiveValue value(std::move(text));
    value.mutable_ = true;
    return value;
}

ArchiveValue ArchiveValue::mutableData(PlistValue::Data bytes) {
    ArchiveValue value(std::move(bytes));
    value.mutable_ = true;
    return value;
}

ArchiveValue ArchiveValue::mutableArray(Array elements) {
    ArchiveValue value(std::move(elements));
    value.mutable_ = true;
    return value;
}

ArchiveValue ArchiveValue::mutableDictionary(Dictionary entries) {
    ArchiveValue value(std::move(entries));
    value.mutable_ = true;
    return value;
}

bool ArchiveValue::isNull() const {
    const PlistValue* leaf = asLeaf();
    return leaf != nullptr && leaf->isNull();
}

bool ArchiveValue::isNumber() const {
    const PlistValue* leaf = asLeaf();
    return leaf != nullptr && leaf->isNumber();
}

bool ArchiveValue::isString() const {
    return asString() != nullptr;
}

bool ArchiveValue::isData() const {
    return asData() != nullptr;
}

bool ArchiveValue::isDate() const {
    return asDate().has_value();
}

const std::string* ArchiveValue::asString() const {
    const PlistValue* leaf = asLeaf();
    return leaf != nullptr ? leaf->asString() : nullptr;
}

const PlistValue::Data* ArchiveValue::asData() const {
    const PlistValue* leaf = asLeaf();
    return leaf != nullptr ? leaf->asData() : nullptr;
}

std::optional<Date> ArchiveValue::asDate() const {
    const PlistValue* leaf = asLeaf();
    return leaf != nullptr ? leaf->asDate() : std::nullopt;
}

std::optional<PlistValue> ArchiveValue::plist() const {
    if (const auto* leaf = asLeaf()) return *leaf;
    if (const auto* elements = asArray()) {
        PlistValue::Array converted;
        converted.reserve(elements->size());
        for (const auto& element : *elements) {
            auto plistElement = element.plist();
            if (!plistElement) return std::nullopt;
            converted.push_back(std::move(*plistElement));
        }
        return converted;
    }
    if (const auto* entries = asDictionary()) {
        PlistValue::Dictionary converted;
        for (const auto& [key, element] : *entries) {
            auto plistElement = element.plist();
            if (!plistElement) return std::nullopt;
            converted.emplace_hint(converted.end(), key, std::move(*plistElement));
        }
        return converted;
    }
    return std::nullopt;
}

}  // namespace stowhaven
