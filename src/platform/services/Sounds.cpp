#include "platform/services/Sounds.h"

#include "platform/Log.h"

namespace stowhaven {

void HostSounds::playDoneSound() { SH_LOG("Playing sound <Done.aiff>"); }

void HostSounds::vibrate() { SH_LOG("Vibrating"); }

}  // namespace stowhaven
