#include "platform/Platform.h"

#include "platform/HostShell.h"
#include "platform/services/HostBattery.h"
#include "platform/services/HostCalendarStore.h"
#include "platform/services/HostContactsAccess.h"
#include "platform/services/HostMailComposer.h"
#include "platform/services/HostPhotoLibrary.h"
#include "platform/services/HostReachability.h"

namespace stowhaven {

Platform& Platform::current() {
    static std::unique_ptr<Platform> platform = host();
    return *platform;
}

std::unique_ptr<Platform> Platform::host() {
    auto platform = std::make_unique<Platform>();
    platform->setShell(std::make_unique<HostShell>());
    platform->setClock(std::make_unique<HostClock>());
    platform->setReachability(std::make_unique<HostReachability>());
    platform->setBattery(std::make_unique<HostBattery>());
    platform->setSounds(std::make_unique<HostSounds>());
    platform->setCalendar(std::make_unique<HostCalendarStore>());
    platform->setMail(std::make_unique<HostMailComposer>());
    platform->setSystemNotifications(std::make_unique<HostSystemNotifications>());
    platform->setContactsAccess(std::make_unique<HostContactsAccess>());
    platform->setPhotoLibrary(std::make_unique<HostPhotoLibrary>());
    return platform;
}

}  // namespace stowhaven
