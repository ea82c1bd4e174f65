#include "net/MlsdListing.h"

#include "net/ListingText.h"
#include "platform/AsciiCase.h"

#include <charconv>

namespace stowhaven::MlsdListing {

namespace {

using ListingText::nameProblem;
using ListingText::shown;

enum class EntryKind { File, Directory, SymbolicLink, ThisOrParent };

std::optional<EntryKind> kindOf(std::string_view type) {
    if (equalsIgnoringAsciiCase(type, "file")) return EntryKind::File;
    if (equalsIgnoringAsciiCase(type, "dir")) return EntryKind::Directory;
    if (equalsIgnoringAsciiCase(type, "cdir") || equalsIgnoringAsciiCase(type, "pdir")) return EntryKind::ThisOrParent;
    if (equalsIgnoringAsciiCase(type, "OS.unix=symlink") || beginsIgnoringAsciiCase(type, "OS.unix=slink"))
        return EntryKind::SymbolicLink;
    return std::nullopt;
}

struct Facts {
    std::optional<EntryKind> kind;
    std::int64_t size = 0;
};

// The facts before the name: "type=file;size=12;modify=...;", each "name=value;".
std::optional<Facts> parseFacts(std::string_view text, std::string& problem) {
    Facts facts;
    while (!text.empty()) {
        const auto end = text.find(';');
        const std::string_view fact = text.substr(0, end);
        text.remove_prefix(end + 1);
        const auto equals = fact.find('=');
        if (equals == 0 || equals == std::string_view::npos) {
            problem = "a fact " + shown(fact) + " that is not name=value";
            return std::nullopt;
        }
        const std::string_view name = fact.substr(0, equals);
        const std::string_view value = fact.substr(equals + 1);
        if (equalsIgnoringAsciiCase(name, "type")) {
            facts.kind = kindOf(value);
            if (!facts.kind) {
                problem = "an entry of the unknown type " + shown(value);
                return std::nullopt;
            }
        } else if (equalsIgnoringAsciiCase(name, "size")) {
            const auto [last, error] = std::from_chars(value.data(), value.data() + value.size(), facts.size);
            if (error != std::errc() || last != value.data() + value.size() || value.empty() || facts.size < 0) {
                problem = "a size " + shown(value) + " that is not a number";
                return std::nullopt;
            }
        }
    }
    if (!facts.kind) problem = "an entry without its type";
    return facts.kind ? std::optional(facts) : std::nullopt;
}

// One line without its CRLF; nothing for "." and "..", which the listing leaves out.
ListingText::Line parseLine(std::string_view line, std::string& problem) {
    const auto space = line.find(' ');
    if (space == std::string_view::npos || space == 0 || line[space - 1] != ';') {
        problem = "a line " + shown(line) + " that is not facts, \"; \" and a name";
        return std::nullopt;
    }
    const auto facts = parseFacts(line.substr(0, space), problem);
    if (!facts) return std::nullopt;
    if (*facts->kind == EntryKind::ThisOrParent) return std::optional<FtpEntry>();
    const std::string_view name = line.substr(space + 1);
    if (const auto why = nameProblem(name)) {
        problem = *why;
        return std::nullopt;
    }
    FtpEntry entry;
    entry.name = std::string(name);
    entry.isDirectory = *facts->kind == EntryKind::Directory;
    entry.isSymbolicLink = *facts->kind == EntryKind::SymbolicLink;
    entry.size = facts->size;
    return std::optional(entry);
}

}  // namespace

std::optional<std::vector<FtpEntry>> parse(std::string_view data, std::string* problem) {
    return ListingText::entries(data, &parseLine, problem);
}

}  // namespace stowhaven::MlsdListing
