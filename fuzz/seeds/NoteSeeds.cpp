// The texts that carry sessions between devices: the vCard the program shares, the same
// vCard as another address book exports it (CRLF, folded, more properties), the note of
// the address-book record in its current format, and an old note as older versions made
// it with tar, gzip and uuencode.

#include "archive/HistoryText.h"
#include "core/AddressBookNote.h"
#include "seeds/Seeds.h"
#include "support/SampleSessions.h"

namespace stowhaven::fuzz {

namespace {

// As an address book exports a contact: CRLF, lines folded at 75 characters.
std::string exportedVCard(const std::string& note) {
    std::string folded = "NOTE;CHARSET=UTF-8:";
    for (std::size_t start = 0; start < note.size(); start += 74) folded += (start ? "\r\n " : "") + note.substr(start, 74);
    return "BEGIN:VCARD\r\nVERSION:3.0\r\nPRODID:-//Example Inc.//Address Book 8.1.2//EN\r\nN:Stow;Haven;;;\r\n"
           "FN:Haven Stow\r\nORG:Larkmoor\\, Inc.;\r\nitem1.URL;type=pref:https\\://stowhaven.larkmoor.example/guide\r\n"
           "item1.X-ABLabel:_$!<HomePage>!$_\r\n" +
           folded + "\r\nEND:VCARD\r\n";
}

std::string oldNote() {
    const ScratchFolder scratch;
    scratch.write("packed/var/mobile/cydiaApps.txt",
                  "Cydia Substrate\tmobilesubstrate\t0.9.5101\tExample Maker <maker@example.org>\tDevelopment\t"
                  "firmware (>= 2.0)\tinstall ok installed\n"
                  "Activator\tlibactivator\t1.8.3\tExample Maker <maker@example.org>\tTweaks\t"
                  "mobilesubstrate, preferenceloader\tinstall ok installed\n");
    scratch.write("packed/tmp/com.apple.springboard.plist",
                  "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
                  "\t<key>SBShowBatteryPercentage</key>\n\t<true/>\n</dict>\n</plist>\n");
    const std::string folder = "'" + scratch.path() + "'";
    return hostOutput("cd " + folder + " && touch -d '2010-06-01 12:00:00 UTC' packed/var/mobile/cydiaApps.txt && " +
                      "tar -C packed -czf cydiaApps.tbz var tmp && uuencode -m cydiaApps.tbz cydiaApps.tbz");
}

}  // namespace

void writeNoteSeeds(const std::filesystem::path& folder) {
    const SeedCorpus corpus(folder, "vcard_note");
    const auto session = test::fullSession();
    const std::string shared = *HistoryText::encode(ArchiveValue(ArchiveValue::Array{session}));
    corpus.add("shared.vcf", AddressBookNote::vCardOf(shared));
    corpus.add("exported.vcf", exportedVCard(shared));
    corpus.add("note.txt", *HistoryText::encode(ArchiveValue::mutableArray(ArchiveValue::Array{session, session})));
    corpus.add("old-note.txt", oldNote());
}

}  // namespace stowhaven::fuzz
