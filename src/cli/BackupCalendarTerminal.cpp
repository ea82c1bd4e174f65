#include "cli/BackupCalendarTerminal.h"

#include "cli/MenuNumber.h"
#include "cli/TerminalFlow.h"
#include "cli/TextWrap.h"
#include "core/BackupSession.h"
#include "core/CydiaFileManager.h"
#include "core/Text.h"
#include "flows/BackupCalendar.h"
#include "flows/MainLabels.h"
#include "platform/Platform.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

namespace stowhaven {

namespace {

void drawMonth(const BackupCalendar& calendar, std::ostream& out) {
    fmt::print(out, "\n{:^28}\n", calendar.title());
    fmt::print(out, " Su  Mo  Tu  We  Th  Fr  Sa\n");
    for (const BackupCalendar::Week& week : calendar.weeks()) {
        std::string line;
        for (const BackupCalendar::Day& day : week) {
            line += day.number == 0 ? "    " : fmt::format(" {:>2}{}", day.number, day.hasSession ? '*' : ' ');
        }
        fmt::print(out, "{}\n", line);
    }
}

void listSessionsOn(TerminalFlow& flow, const BackupCalendar& calendar, unsigned day) {
    const auto sessions = calendar.sessionsOn(day);
    if (sessions.empty()) {
        fmt::print(flow.out(), "No backup on that day.\n");
        return;
    }
    for (const auto& session : sessions) {
        const std::string when = gDisplayDateFormatter.stringFromDate(*session->sessionDate());
        fmt::print(flow.out(), "{}\n",
                   wrappedBehind("  ", fmt::format("{}  {}", when, session->title().value_or("-")), flow.width()));
        if (const auto& description = session->quickDescription(); description && !description->empty()) {
            fmt::print(flow.out(), "{}\n", wrappedBehind("    ", *description, flow.width()));
        }
    }
}

}  // namespace

void showBackupCalendar(TerminalFlow& flow) {
    BackupCalendar calendar(CydiaFileManager::shared().backupSessions(), Platform::current().clock().date());
    while (true) {
        drawMonth(calendar, flow.out());
        const auto typed = flow.prompt()->readText("Day, n (next month), p (previous month) or 0 (back): ");
        if (!typed) return;
        const std::string answer = textutil::lowered(textutil::trimmed(*typed));
        if (answer == "n") {
            calendar.showNextMonth();
        } else if (answer == "p") {
            calendar.showPreviousMonth();
        } else if (const auto day = menuNumber(answer, 31)) {
            if (*day == 0) return;
            listSessionsOn(flow, calendar, static_cast<unsigned>(*day));
        } else {
            fmt::print(flow.out(), "Type a day of the month, n, p or 0.\n");
        }
    }
}

}  // namespace stowhaven
