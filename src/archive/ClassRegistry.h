#pragma once

#include "archive/Codable.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace stowhaven {

class KeyedUnarchiver;

// The model classes an unarchiver may make, by archived class name. Foundation's own
// classes (strings, arrays, dictionaries, data, dates, numbers, the null object) are read
// by the unarchiver itself and need no entry; any other class name refuses the archive.
class ClassRegistry {
public:
    // Reads one object from the unarchiver, which stands at that object's keys, as an
    // initWithCoder: step does. nullptr refuses the object, which then reads as nil.
    using Factory = std::function<std::shared_ptr<Codable>(KeyedUnarchiver& coder)>;

    // A later registration of the same name replaces the earlier one.
    void registerClass(std::string className, Factory factory);

    // Nothing for a name that isn't registered.
    const Factory* factoryFor(std::string_view className) const;

private:
    std::map<std::string, Factory, std::less<>> factories_;
};

}  // namespace stowhaven
