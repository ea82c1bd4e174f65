#pragma once

#include <string>
#include <vector>

namespace stowhaven {

class KeyedArchiver;

// A model class that keyed archives carry. It names its class chain and writes its fields;
// it is read back by the factory registered for its class name (ClassRegistry).
class Codable {
public:
    virtual ~Codable() = default;

    // The archived class name and its superclasses, most derived first and ending with
    // "NSObject", as in {"Application", "SelectableItem", "NSObject"}.
    virtual std::vector<std::string> classChain() const = 0;

    virtual void encodeWithCoder(KeyedArchiver& coder) const = 0;
};

}  // namespace stowhaven
