#pragma once

namespace stowhaven {

// Sets the MTU of the device's network interface en0 to 1400, as the program does at
// start and at each return to the front. It acts on the running machine, so it runs on the
// device itself only (device root "/").
void limitNetworkMtu();

}  // namespace stowhaven
