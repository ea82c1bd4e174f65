#pragma once

#include "platform/Shell.h"
#include "platform/services/Battery.h"
#include "platform/services/CalendarStore.h"
#include "platform/services/Clock.h"
#include "platform/services/ContactsAccess.h"
#include "platform/services/MailComposer.h"
#include "platform/services/PhotoLibrary.h"
#include "platform/services/Reachability.h"
#include "platform/services/Sounds.h"
#include "platform/services/SystemNotifications.h"

#include <memory>

namespace stowhaven {

// The services of the device that the system leans on, each behind a small interface.
// The process has one set: the host's by default; tests put doubles in its place.
class Platform {
public:
    static Platform& current();

    // The host's implementations.
    static std::unique_ptr<Platform> host();

    Shell& shell() { return *shell_; }
    Clock& clock() { return *clock_; }
    Reachability& reachability() { return *reachability_; }
    Battery& battery() { return *battery_; }
    Sounds& sounds() { return *sounds_; }
    CalendarStore& calendar() { return *calendar_; }
    MailComposer& mail() { return *mail_; }
    SystemNotifications& systemNotifications() { return *systemNotifications_; }
    ContactsAccess& contactsAccess() { return *contactsAccess_; }
    PhotoLibrary& photoLibrary() { return *photoLibrary_; }

    void setShell(std::unique_ptr<Shell> shell) { shell_ = std::move(shell); }
    void setClock(std::unique_ptr<Clock> clock) { clock_ = std::move(clock); }
    void setReachability(std::unique_ptr<Reachability> reachability) { reachability_ = std::move(reachability); }
    void setBattery(std::unique_ptr<Battery> battery) { battery_ = std::move(battery); }
    void setSounds(std::unique_ptr<Sounds> sounds) { sounds_ = std::move(sounds); }
    void setCalendar(std::unique_ptr<CalendarStore> calendar) { calendar_ = std::move(calendar); }
    void setMail(std::unique_ptr<MailComposer> mail) { mail_ = std::move(mail); }
    void setSystemNotifications(std::unique_ptr<SystemNotifications> notifications) {
        systemNotifications_ = std::move(notifications);
    }
    void setContactsAccess(std::unique_ptr<ContactsAccess> access) { contactsAccess_ = std::move(access); }
    void setPhotoLibrary(std::unique_ptr<PhotoLibrary> library) { photoLibrary_ = std::move(library); }

private:
    std::unique_ptr<Shell> shell_;
    std::unique_ptr<Clock> clock_;
    std::unique_ptr<Reachability> reachability_;
    std::unique_ptr<Battery> battery_;
    std::unique_ptr<Sounds> sounds_;
    std::unique_ptr<CalendarStore> calendar_;
    std::unique_ptr<MailComposer> mail_;
    std::unique_ptr<SystemNotifications> systemNotifications_;
    std::unique_ptr<ContactsAccess> contactsAccess_;
    std::unique_ptr<PhotoLibrary> photoLibrary_;
};

}  // namespace stowhaven
