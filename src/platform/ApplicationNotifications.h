#pragma once

namespace stowhaven {

// What the system tells the program about its own life, posted by the application's
// delegate through the default notification centre.
inline constexpr const char* kApplicationWillEnterForegroundNotification = "APPLICATION_WILL_ENTER_FOREGROUND";

}  // namespace stowhaven
