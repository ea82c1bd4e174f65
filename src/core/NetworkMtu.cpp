#include "core/NetworkMtu.h"

#include "platform/Platform.h"

namespace stowhaven {

void limitNetworkMtu() { Platform::current().shell().executeOnRunningSystem("ifconfig en0 mtu 1400"); }

}  // namespace stowhaven
