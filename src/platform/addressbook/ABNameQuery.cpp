#include "platform/addressbook/ABNameQuery.h"

#include "platform/AsciiCase.h"

#include <algorithm>
#include <array>

namespace stowhaven {

namespace {

constexpr std::array kNameProperties = {kABPersonFirstNameProperty, kABPersonMiddleNameProperty,
                                        kABPersonLastNameProperty, kABPersonNicknameProperty,
                                        kABPersonOrganizationProperty};

// ASCII alone, whatever the locale of the process.
bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v'; }

std::vector<std::string> wordsOf(const std::string& text) {
    std::vector<std::string> words;
    for (auto start = text.begin(); start != text.end();) {
        start = std::find_if_not(start, text.end(), isSpace);
        const auto end = std::find_if(start, text.end(), isSpace);
        if (start != end) words.emplace_back(start, end);
        start = end;
    }
    return words;
}

}  // namespace

ABNameQuery::ABNameQuery(const std::string& name) : words_(wordsOf(name)) {}

bool ABNameQuery::matches(const ABRecord& person) const {
    if (words_.empty()) return false;
    std::vector<std::string> personWords;
    for (ABPropertyID property : kNameProperties) {
        if (const auto value = person.copyValue(property)) {
            for (std::string& word : wordsOf(*value)) personWords.push_back(std::move(word));
        }
    }
    return std::all_of(words_.begin(), words_.end(), [&](const std::string& word) {
        return std::any_of(personWords.begin(), personWords.end(),
                           [&](const std::string& personWord) { return beginsIgnoringAsciiCase(personWord, word); });
    });
}

}  // namespace stowhaven
