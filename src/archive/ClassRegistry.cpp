#include "archive/ClassRegistry.h"

namespace stowhaven {

void ClassRegistry::registerClass(std::string className, Factory factory) {
    factories_.insert_or_assign(std::move(className), std::move(factory));
}

const ClassRegistry::Factory* ClassRegistry::factoryFor(std::string_view className) const {
    const auto found = factories_.find(className);
    return found == factories_.end() ? nullptr : &found->second;
}

}  // namespace stowhaven
