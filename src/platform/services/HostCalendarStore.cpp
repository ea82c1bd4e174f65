#include "platform/services/HostCalendarStore.h"

#include "platform/DeviceRoot.h"
#include "platform/services/OutboxFile.h"

#include <fmt/format.h>
#include <unistd.h>

#include <atomic>

namespace stowhaven {

namespace {

// Text values escape backslash, semicolon, comma and line breaks.
std::string escapeText(const std::string& text) {
    std::string escaped;
    for (char c : text) {
        if (c == '\\' || c == ';' || c == ',') {
            escaped += '\\';
            escaped += c;
        } else if (c == '\n') {
            escaped += "\\n";
        } else if (c != '\r') {
            escaped += c;
        }
    }
    return escaped;
}

// Content lines longer than 75 octets continue on lines that start with a blank; a cut
// never splits a UTF-8 sequence.
std::string folded(const std::string& line) {
    std::string result;
    std::size_t lineLength = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const bool startsCharacter = (static_cast<unsigned char>(line[i]) & 0xC0) != 0x80;
        if (lineLength >= 74 && startsCharacter) {
            result += "\r\n ";
            lineLength = 1;
        }
        result += line[i];
        ++lineLength;
    }
    return result + "\r\n";
}

}  // namespace

std::string HostCalendarStore::iCalendarText(const CalendarEvent& event, const std::string& uid) {
    std::string text;
    for (const std::string& line : {
             std::string("BEGIN:VCALENDAR"),
             std::string("VERSION:2.0"),
             std::string("PRODID:-//Stowhaven//Stowhaven//EN"),
             std::string("BEGIN:VEVENT"),
             "UID:" + uid,
             "DTSTAMP:" + OutboxFile::utcStamp(event.start),
             "DTSTART:" + OutboxFile::utcStamp(event.start),
             "DTEND:" + OutboxFile::utcStamp(event.end),
             "SUMMARY:" + escapeText(event.title),
             "DESCRIPTION:" + escapeText(event.notes),
             std::string("END:VEVENT"),
             std::string("END:VCALENDAR"),
         }) {
        text += folded(line);
    }
    return text;
}

std::optional<std::string> HostCalendarStore::addEvent(const CalendarEvent& event) {
    const std::string folder = DeviceRoot::var() + "/mobile/Library/Stowhaven/Calendar";
    static std::atomic<unsigned> eventsThisRun{0};
    const std::string uid = fmt::format("{}-{}-{}@stowhaven", OutboxFile::utcStamp(event.start), getpid(), ++eventsThisRun);
    if (!OutboxFile::write(folder, event.start, "ics", iCalendarText(event, uid))) {
        return fmt::format("Couldn't write the event into <{}>", folder);
    }
    return std::nullopt;
}

}  // namespace stowhaven
