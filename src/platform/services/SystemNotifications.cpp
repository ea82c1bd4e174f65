#include "platform/services/SystemNotifications.h"

#include "platform/Log.h"

namespace stowhaven {

void HostSystemNotifications::post(const std::string& name) { SH_LOG("Posted system notification <{}>", name); }

}  // namespace stowhaven
