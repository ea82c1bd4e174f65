#pragma once

#include "platform/addressbook/ABRecord.h"

#include <string>
#include <vector>

namespace stowhaven {

// A lookup by name as the device's: a person matches when every word of the name begins,
// ignoring ASCII case, some word of its first, middle, last, nick or organisation name.
// A name without words matches nobody.
class ABNameQuery {
public:
    explicit ABNameQuery(const std::string& name);
    bool matches(const ABRecord& person) const;

private:
    std::vector<std::string> words_;
};

}  // namespace stowhaven
