#pragma once

#include "platform/Date.h"
#include "platform/plist/PlistValue.h"

#include <optional>
#include <string>
#include <string_view>

namespace stowhaven {

// The text forms in which the address book keeps a device's history, and the vCard that
// shares it:
//
// - the current note: the history text of the array of sessions, enciphered as a whole
//   by the file cipher when the newest session is encrypted;
// - the old note: a uuencoded gzip tar ("begin-base64 644 ...") of the package list and
//   the SpringBoard's settings.
class AddressBookNote {
public:
    // The product's user guide, which the record and the vCard link to.
    static constexpr const char* kUserGuideURL = "https://stowhaven.larkmoor.example/guide";

    // What an old note held.
    struct OldFormatContents {
        std::string rawData;
        // The package list's modification date, which the archive kept.
        Date sessionDate;
        // The SpringBoard's settings; empty when the note held none.
        PlistValue::Dictionary springboard;
    };

    static bool isOldFormat(std::string_view note);
    // Enciphered by the file cipher, whose Base64 begins with that of "Salted__".
    static bool isEnciphered(std::string_view note);

    // The deciphered note; nothing, with a log line, when it can't be deciphered.
    static std::optional<std::string> deciphered(const std::string& note);
    // The history text of a note in the current format: the note itself, deciphered first
    // where it is enciphered.
    static std::optional<std::string> historyText(const std::string& note);

    // Reads what an old note held, in memory (no file is written, no tool runs): the package
    // list and the SpringBoard's settings, picked from the archive by name. Nothing, with a
    // log line, when the package list isn't there or the note is damaged.
    static std::optional<OldFormatContents> expandOldFormat(const std::string& note);

    // The vCard that shares a note: the program's contact, with the note.
    static std::string vCardOf(std::string_view note);
    // The note of a vCard, its folded lines joined; nothing without a NOTE property.
    static std::optional<std::string> noteOfVCard(std::string_view vCard);
};

}  // namespace stowhaven
