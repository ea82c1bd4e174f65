#include "cli/TextWrap.h"

#include <algorithm>

namespace stowhaven {

namespace {

// Every byte but UTF-8's continuation bytes (10xxxxxx) starts a character.
bool startsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }

void appendWrapped(std::string_view line, std::size_t width, std::string& result) {
    if (columnCount(line) <= width) {
        result += line;
        return;
    }
    std::string current;
    std::size_t position = 0;
    while (true) {
        const std::size_t wordStart = line.find_first_not_of(' ', position);
        // The spaces ending a line that was too long go with the break.
        if (wordStart == std::string_view::npos) break;
        const std::size_t wordEnd = std::min(line.find(' ', wordStart), line.size());
        const std::string_view gap = line.substr(position, wordStart - position);
        const std::string_view word = line.substr(wordStart, wordEnd - wordStart);
        // At the start the gap is the line's indentation, which stays.
        if (current.empty() || columnCount(current) + columnCount(gap) + columnCount(word) <= width) {
            current.append(gap).append(word);
        } else {
            result.append(current).append("\n");
            current = word;
        }
        position = wordEnd;
    }
    result += current;
}

}  // namespace

std::size_t columnCount(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), startsCharacter));
}

std::string_view leadingColumns(std::string_view text, std::size_t columns) {
    std::size_t seen = 0;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (startsCharacter(text[index]) && seen++ == columns) return text.substr(0, index);
    }
    return text;
}

std::string wrapped(std::string_view text, std::size_t width) {
    std::string result;
    std::size_t start = 0;
    while (true) {
        const std::size_t end = text.find('\n', start);
        appendWrapped(text.substr(start, end - start), width, result);
        if (end == std::string_view::npos) return result;
        result += '\n';
        start = end + 1;
    }
}

std::string wrappedBehind(std::string_view lead, std::string_view text, std::size_t width) {
    const std::size_t indent = columnCount(lead);
    std::string result(lead);
    for (const char character : wrapped(text, width > indent ? width - indent : 1)) {
        result += character;
        if (character == '\n') result.append(indent, ' ');
    }
    return result;
}

}  // namespace stowhaven
