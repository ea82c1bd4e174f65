#include "core/Supervisor.h"

#include "core/ProcessFlags.h"
#include "platform/Log.h"
#include "platform/Platform.h"

#include <fmt/format.h>

namespace stowhaven {

void Supervisor::backupOrRestoreDone() {
    if (gSoundEnabled) playDoneSound();
    if (gVibrateEnabled) vibrate();
    if (gICalIntegrationEnabled) storeEKEvent();
}

void Supervisor::playDoneSound() { Platform::current().sounds().playDoneSound(); }

void Supervisor::vibrate() { Platform::current().sounds().vibrate(); }

void Supervisor::setJobSummaryProvider(JobSummaryProvider provider) {
    std::lock_guard lock(mutex_);
    jobSummaryProvider_ = std::move(provider);
}

void Supervisor::storeEKEvent() {
    JobSummaryProvider provider;
    {
        std::lock_guard lock(mutex_);
        provider = jobSummaryProvider_;
    }
    if (!provider) return;
    const JobSummary summary = provider();
    if (summary.packagesText.empty()) return;

    std::string title = gIsBackupMode ? "Stowhaven™: Backup" : "Stowhaven™: Restore";
    if (!summary.lastSessionTitle.empty()) title += fmt::format(" [{}]", summary.lastSessionTitle);
    std::string notes = summary.twitterFeedData + summary.packagesText;
    if (!summary.lastSessionDescription.empty()) {
        notes = fmt::format("Description: {}\n{}", summary.lastSessionDescription, notes);
    }
    const auto now = Platform::current().clock().now();
    if (const auto error = Platform::current().calendar().addEvent({title, notes, now, now})) {
        SH_LOG("Error <{}> while creating event in Calendar!", *error);
    } else {
        SH_LOG("Event created in Calendar!");
    }
}

}  // namespace stowhaven
