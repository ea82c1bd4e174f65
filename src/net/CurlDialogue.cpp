#include "net/CurlDialogue.h"

#include "platform/AsciiCase.h"

namespace stowhaven {

namespace {

// A server that talks without end costs no more than this.
constexpr std::size_t kKeptLines = 64;
constexpr std::size_t kLongestLine = 512;

template <typename Visit>
void forEachLine(std::string_view text, Visit visit) {
    while (!text.empty()) {
        const auto end = text.find('\n');
        std::string_view line = text.substr(0, end);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (!line.empty()) visit(line);
        if (end == std::string_view::npos) break;
        text.remove_prefix(end + 1);
    }
}

bool carriesCredentials(std::string_view line) {
    return beginsIgnoringAsciiCase(line, "PASS") || beginsIgnoringAsciiCase(line, "Authorization:") ||
           beginsIgnoringAsciiCase(line, "Proxy-Authorization:");
}

}  // namespace

void CurlDialogue::clear() {
    replies_.clear();
    both_.clear();
}

void CurlDialogue::received(std::string_view text) {
    forEachLine(text, [this](std::string_view line) {
        append(replies_, clean(line));
        append(both_, "< " + clean(line));
    });
}

void CurlDialogue::sent(std::string_view text) {
    forEachLine(text, [this](std::string_view line) {
        if (!carriesCredentials(line)) append(both_, "> " + clean(line));
    });
}

std::string CurlDialogue::tail() const {
    std::string text;
    for (const auto& line : both_) text += (text.empty() ? "" : " | ") + line;
    return text;
}

std::string CurlDialogue::clean(std::string_view text) const {
    std::string line(text);
    if (!secret_.empty()) {
        for (auto at = line.find(secret_); at != std::string::npos; at = line.find(secret_, at + 4))
            line.replace(at, secret_.size(), "****");
    }
    if (line.size() > kLongestLine) line.resize(kLongestLine);
    for (char& c : line) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = ' ';
    }
    return line;
}

void CurlDialogue::append(std::deque<std::string>& lines, std::string line) {
    lines.push_back(std::move(line));
    if (lines.size() > kKeptLines) lines.pop_front();
}

}  // namespace stowhaven
