#include "net/ListingText.h"

#include "platform/FileNames.h"

namespace stowhaven::ListingText {

std::optional<std::vector<FtpEntry>> entries(std::string_view data, const LineReader& read, std::string* problem) {
    std::string why;
    std::vector<FtpEntry> found;
    while (!data.empty()) {
        const auto end = data.find('\n');
        if (end == std::string_view::npos) {
            why = "its last line cut short";
            break;
        }
        std::string_view line = data.substr(0, end);
        if (line.ends_with('\r')) line.remove_suffix(1);
        const auto entry = read(line, why);
        if (!entry) break;
        if (*entry) found.push_back(std::move(**entry));
        data.remove_prefix(end + 1);
    }
    if (why.empty()) return found;
    if (problem != nullptr) *problem = "the server's listing has " + why;
    return std::nullopt;
}

std::optional<std::string> nameProblem(std::string_view name) {
    if (name.empty()) return "an entry without a name";
    if (name == "." || name == "..") return "an entry named " + shown(name);
    if (!isOneFileName(name)) return "an entry named " + shown(name) + ", which is not one file name";
    return std::nullopt;
}

std::string shown(std::string_view text) {
    std::string quoted(text.substr(0, 80));
    for (char& c : quoted) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = '?';
    }
    return "\"" + quoted + (text.size() > 80 ? "...\"" : "\"");
}

}  // namespace stowhaven::ListingText
