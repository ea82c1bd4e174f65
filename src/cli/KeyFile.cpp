#include "cli/KeyFile.h"

#include "core/Text.h"
#include "platform/FileManager.h"

namespace stowhaven {

namespace {

std::optional<std::string> firstLine(const std::string& path) {
    const auto text = FileManager::contentsOfFile(path);
    if (!text) return std::nullopt;
    std::string line = textutil::split(*text, '\n').front();
    if (line.ends_with('\r')) line.pop_back();
    return line;
}

std::optional<std::string> unlessEmpty(std::string text) {
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

}  // namespace

std::optional<std::string> keyFromFile(const std::string& path) {
    const auto line = firstLine(path);
    return line ? unlessEmpty(textutil::trimmed(*line)) : std::nullopt;
}

std::optional<std::string> passwordFromFile(const std::string& path) {
    const auto line = firstLine(path);
    return line ? unlessEmpty(*line) : std::nullopt;
}

}  // namespace stowhaven
