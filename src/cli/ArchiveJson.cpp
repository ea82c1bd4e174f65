#include "cli/ArchiveJson.h"

#include "archive/Base64.h"
#include "archive/KeyedArchiveFormat.h"

#include <cmath>
#include <set>

namespace stowhaven {

namespace {

using namespace keyedarchive;

std::string base64Of(const PlistValue::Data& bytes) {
    return Base64::encode(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

class ArchiveToJson {
public:
    explicit ArchiveToJson(const PlistValue::Array& objects) : objects_(objects) {}

    // A value as it stands under a key: a reference, or a number or text in place.
    nlohmann::json value(const PlistValue& value) {
        if (const auto uid = value.asUid()) return object(*uid);
        return leaf(value);
    }

private:
    nlohmann::json object(std::uint64_t uid) {
        if (uid == 0 || uid >= objects_.size() || !visiting_.insert(uid).second) return nullptr;
        const PlistValue& object = objects_[uid];
        nlohmann::json result = object.isDictionary() ? instance(*object.asDictionary()) : leaf(object);
        visiting_.erase(uid);
        return result;
    }

    static nlohmann::json leaf(const PlistValue& value) {
        if (const auto boolean = value.asBoolean()) return *boolean;
        if (const auto integer = value.asInteger()) return *integer;
        if (const auto unsignedInteger = value.asUnsignedInteger()) return *unsignedInteger;
        if (const auto real = value.asReal()) return std::isfinite(*real) ? nlohmann::json(*real) : nullptr;
        if (const auto* text = value.asString()) return *text;
        if (const auto* bytes = value.asData()) return base64Of(*bytes);
        if (const auto date = value.asDate()) return date->iso8601();
        return nullptr;
    }

    const std::string* className(const PlistValue::Dictionary& keys) const {
        const auto classReference = keys.find(kClassKey);
        if (classReference == keys.end() || !classReference->second.asUid()) return nullptr;
        const auto uid = *classReference->second.asUid();
        if (uid >= objects_.size() || !objects_[uid].isDictionary()) return nullptr;
        const auto name = objects_[uid].asDictionary()->find(kClassNameKey);
        return name == objects_[uid].asDictionary()->end() ? nullptr : name->second.asString();
    }

    nlohmann::json field(const PlistValue::Dictionary& keys, const char* key) {
        const auto found = keys.find(key);
        return found == keys.end() ? nlohmann::json() : value(found->second);
    }

    nlohmann::json elements(const PlistValue::Dictionary& keys, const char* key) {
        nlohmann::json list = nlohmann::json::array();
        const auto found = keys.find(key);
        if (found == keys.end() || !found->second.isArray()) return list;
        for (const PlistValue& element : *found->second.asArray()) list.push_back(value(element));
        return list;
    }

    nlohmann::json instance(const PlistValue::Dictionary& keys) {
        const std::string* name = className(keys);
        if (name == nullptr) return nullptr;
        if (*name == "NSArray" || *name == "NSMutableArray" || *name == "NSSet" || *name == "NSMutableSet" ||
            *name == "NSOrderedSet" || *name == "NSMutableOrderedSet") {
            return elements(keys, kObjectsOfContainerKey);
        }
        if (*name == "NSDictionary" || *name == "NSMutableDictionary") {
            const nlohmann::json names = elements(keys, kKeysOfDictionaryKey);
            const nlohmann::json values = elements(keys, kObjectsOfContainerKey);
            nlohmann::json dictionary = nlohmann::json::object();
            for (std::size_t index = 0; index < names.size() && index < values.size(); ++index) {
                if (names[index].is_string()) dictionary[names[index].get<std::string>()] = values[index];
            }
            return dictionary;
        }
        if (*name == "NSString" || *name == "NSMutableString") return field(keys, kStringKey);
        if (*name == "NSData" || *name == "NSMutableData") return field(keys, kDataKey);
        if (*name == "NSDate") {
            const auto time = keys.find(kTimeKey);
            const auto seconds = time == keys.end() ? std::nullopt : time->second.numberAsReal();
            return seconds ? nlohmann::json(Date(*seconds).iso8601()) : nullptr;
        }
        if (*name == "NSNull") return nullptr;
        nlohmann::json model = nlohmann::json::object();
        for (const auto& [key, element] : keys) {
            if (key == kClassKey) continue;
            model[key.starts_with("$$") ? key.substr(1) : key] = value(element);
        }
        return model;
    }

    const PlistValue::Array& objects_;
    // The objects on the way down, so that a cycle ends in null rather than for ever.
    std::set<std::uint64_t> visiting_;
};

}  // namespace

nlohmann::json archiveAsJson(const PlistValue& archive) {
    const auto* keys = archive.asDictionary();
    if (keys == nullptr) return nullptr;
    const auto objects = keys->find(kObjectsKey);
    const auto top = keys->find(kTopKey);
    if (objects == keys->end() || !objects->second.isArray() || top == keys->end() || !top->second.isDictionary()) {
        return nullptr;
    }
    const auto root = top->second.asDictionary()->find(kRootKey);
    if (root == top->second.asDictionary()->end()) return nullptr;
    return ArchiveToJson(*objects->second.asArray()).value(root->second);
}

}  // namespace stowhaven
