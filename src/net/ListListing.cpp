#include "net/ListListing.h"

#include "net/ListingText.h"
#include "platform/AsciiCase.h"
#include "platform/Log.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>

namespace stowhaven::ListListing {

namespace {

using ListingText::Line;

// The Unix form's date lies within its first words; a hostile line of many words is not
// read further.
constexpr std::size_t kWordsBeforeName = 12;

struct Word {
    std::string_view text;
    std::size_t end = 0;  // where it ends in its line
};

std::vector<Word> firstWords(std::string_view line, std::size_t most) {
    std::vector<Word> words;
    std::size_t at = 0;
    while (words.size() < most) {
        const auto start = line.find_first_not_of(' ', at);
        if (start == std::string_view::npos) break;
        at = std::min(line.find(' ', start), line.size());
        words.push_back({line.substr(start, at - start), at});
    }
    return words;
}

bool isDigits(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool allOf(std::string_view text, std::string_view allowed) {
    return text.find_first_not_of(allowed) == std::string_view::npos;
}

// "drwxr-xr-x", maybe with the "+", "." or "@" that marks extended attributes.
bool isPermissions(std::string_view word) {
    if (word.size() == 11 && allOf(word.substr(10), "+.@")) word.remove_suffix(1);
    return word.size() == 10 && allOf(word.substr(0, 1), "-dlbcps") && allOf(word.substr(1), "-rwxsStTlL");
}

bool isMonth(std::string_view word) {
    static constexpr std::array<std::string_view, 12> kMonths{"jan", "feb", "mar", "apr", "may", "jun",
                                                              "jul", "aug", "sep", "oct", "nov", "dec"};
    return std::any_of(kMonths.begin(), kMonths.end(),
                       [&](std::string_view month) { return equalsIgnoringAsciiCase(word, month); });
}

bool isDay(std::string_view word) {
    if (word.size() > 2 || !isDigits(word)) return false;
    const int day = word.size() == 1 ? word[0] - '0' : (word[0] - '0') * 10 + (word[1] - '0');
    return day >= 1 && day <= 31;
}

// "10:00", "9:05" or "2025".
bool isTimeOrYear(std::string_view word) {
    if (word.size() == 4 && isDigits(word)) return true;
    const auto colon = word.find(':');
    return (colon == 1 || colon == 2) && isDigits(word.substr(0, colon)) && word.size() == colon + 3 &&
           isDigits(word.substr(colon + 1));
}

// "11-24-26" or "11-24-2026".
bool isDosDate(std::string_view word) {
    return (word.size() == 8 || word.size() == 10) && word[2] == '-' && word[5] == '-' && isDigits(word.substr(0, 2)) &&
           isDigits(word.substr(3, 2)) && isDigits(word.substr(6));
}

// "10:00AM", "10:00pm" or "22:00".
bool isDosTime(std::string_view word) {
    if (word.size() == 7 && (equalsIgnoringAsciiCase(word.substr(5), "AM") || equalsIgnoringAsciiCase(word.substr(5), "PM")))
        word.remove_suffix(2);
    return word.size() == 5 && word[2] == ':' && isDigits(word.substr(0, 2)) && isDigits(word.substr(3));
}

enum class Kind { File, Directory, SymbolicLink };

// What a line of a known form says, before it is judged.
struct Listed {
    Kind kind = Kind::File;
    std::string_view size;  // digits, or empty for a folder of the DOS form
    std::string_view name;
};

std::optional<Listed> unixForm(std::string_view line) {
    const auto words = firstWords(line, kWordsBeforeName);
    if (words.empty() || !isPermissions(words[0].text)) return std::nullopt;
    const char type = words[0].text[0];
    if (type != '-' && type != 'd' && type != 'l') return std::nullopt;
    // Owner and group may be missing or odd, so the size is found as the word before the date.
    for (std::size_t month = 3; month + 2 < words.size(); ++month) {
        if (!isMonth(words[month].text) || !isDay(words[month + 1].text) || !isTimeOrYear(words[month + 2].text) ||
            !isDigits(words[month - 1].text))
            continue;
        const std::size_t nameStart = words[month + 2].end + 1;
        if (nameStart >= line.size()) return std::nullopt;
        Listed listed{type == 'd' ? Kind::Directory : type == 'l' ? Kind::SymbolicLink : Kind::File,
                      words[month - 1].text, line.substr(nameStart)};
        if (listed.kind == Kind::SymbolicLink) listed.name = listed.name.substr(0, listed.name.find(" -> "));
        return listed;
    }
    return std::nullopt;
}

std::optional<Listed> dosForm(std::string_view line) {
    const auto words = firstWords(line, 3);
    if (words.size() < 3 || !isDosDate(words[0].text) || !isDosTime(words[1].text)) return std::nullopt;
    const bool folder = words[2].text == "<DIR>";
    if (!folder && !isDigits(words[2].text)) return std::nullopt;
    const auto nameStart = line.find_first_not_of(' ', words[2].end);
    if (nameStart == std::string_view::npos) return std::nullopt;
    return Listed{folder ? Kind::Directory : Kind::File, folder ? std::string_view() : words[2].text,
                  line.substr(nameStart)};
}

Line entryOf(const Listed& listed, std::string& why) {
    if (listed.name == "." || listed.name == "..") return std::optional<FtpEntry>();
    if (const auto problem = ListingText::nameProblem(listed.name)) {
        why = *problem;
        return std::nullopt;
    }
    FtpEntry entry;
    const char* end = listed.size.data() + listed.size.size();
    if (!listed.size.empty() && std::from_chars(listed.size.data(), end, entry.size).ec != std::errc()) {
        why = "a size " + ListingText::shown(listed.size) + " beyond 64 bits";
        return std::nullopt;
    }
    entry.name = std::string(listed.name);
    entry.isDirectory = listed.kind == Kind::Directory;
    entry.isSymbolicLink = listed.kind == Kind::SymbolicLink;
    return std::optional(entry);
}

bool isTotal(std::string_view line) { return line.starts_with("total ") && isDigits(line.substr(6)); }

}  // namespace

std::optional<std::vector<FtpEntry>> parse(std::string_view data, std::string* problem) {
    std::size_t skipped = 0;
    std::string firstSkipped;
    const auto read = [&](std::string_view line, std::string& why) -> Line {
        if (line.empty() || isTotal(line)) return std::optional<FtpEntry>();
        auto listed = unixForm(line);
        if (!listed) listed = dosForm(line);
        if (listed) return entryOf(*listed, why);
        if (skipped++ == 0) firstSkipped = ListingText::shown(line);
        return std::optional<FtpEntry>();
    };
    auto entries = ListingText::entries(data, read, problem);
    if (skipped > 0) SH_LOG("Skipped {} line(s) of no known LIST form, the first {}", skipped, firstSkipped);
    return entries;
}

}  // namespace stowhaven::ListListing
