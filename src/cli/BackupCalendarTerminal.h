#pragma once

namespace stowhaven {

class TerminalFlow;

// The calendar of backups: a month at a time, weekdays in columns, the days with a session
// marked "*"; a day's number lists its sessions, "n" and "p" go to the next and previous
// month.
void showBackupCalendar(TerminalFlow& flow);

}  // namespace stowhaven
