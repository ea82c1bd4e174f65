#pragma once

#include <any>
#include <string>

namespace stowhaven {

// What a NotificationCenter hands to its observers. The object is a text, a number, some
// other value of the poster's, or empty.
struct Notification {
    std::string name;
    std::any object;
};

}  // namespace stowhaven
