#include "platform/DateFormatter.h"

#include <fmt/format.h>

#include <array>
#include <cctype>
#include <cmath>
#include <ctime>

namespace stowhaven {

namespace {

struct FieldSymbol {
    std::string_view symbol;
    int width;
};

// In the order of the Field enumeration.
constexpr std::array<FieldSymbol, 6> kFieldSymbols = {
    {{"yyyy", 4}, {"MM", 2}, {"dd", 2}, {"HH", 2}, {"mm", 2}, {"ss", 2}}};

// Beyond this a time_t names no year that the C library can break down.
constexpr double kLargestSeconds = 1e15;

int* fieldOf(std::tm& time, std::size_t field) {
    const std::array<int*, 6> fields = {&time.tm_year, &time.tm_mon, &time.tm_mday,
                                        &time.tm_hour, &time.tm_min, &time.tm_sec};
    return fields[field];
}

// tm counts years from 1900 and months from 0.
int offsetOf(std::size_t field) {
    constexpr std::array<int, 6> kOffsets = {1900, 1, 0, 0, 0, 0};
    return kOffsets[field];
}

}  // namespace

DateFormatter::DateFormatter(std::string_view pattern) {
    while (!pattern.empty()) {
        Piece piece{std::nullopt, pattern.front()};
        std::size_t length = 1;
        for (std::size_t field = 0; field < kFieldSymbols.size(); ++field) {
            if (pattern.starts_with(kFieldSymbols[field].symbol)) {
                piece.field = static_cast<Field>(field);
                length = kFieldSymbols[field].symbol.size();
                break;
            }
        }
        pieces_.push_back(piece);
        pattern.remove_prefix(length);
    }
}

std::string DateFormatter::stringFromDate(Date date) const {
    const double seconds = std::floor(date.timeIntervalSince1970());
    if (!(std::fabs(seconds) < kLargestSeconds)) return {};
    const auto moment = static_cast<std::time_t>(seconds);
    std::tm local{};
    if (localtime_r(&moment, &local) == nullptr) return {};

    std::string text;
    for (const Piece& piece : pieces_) {
        if (!piece.field) {
            text += piece.literal;
            continue;
        }
        const auto field = static_cast<std::size_t>(*piece.field);
        text += fmt::format("{:0{}}", *fieldOf(local, field) + offsetOf(field), kFieldSymbols[field].width);
    }
    return text;
}

std::optional<Date> DateFormatter::dateFromString(std::string_view text) const {
    std::tm local{};
    local.tm_mday = 1;
    for (const Piece& piece : pieces_) {
        if (!piece.field) {
            if (text.empty() || text.front() != piece.literal) return std::nullopt;
            text.remove_prefix(1);
            continue;
        }
        const auto field = static_cast<std::size_t>(*piece.field);
        const auto width = static_cast<std::size_t>(kFieldSymbols[field].width);
        if (text.size() < width) return std::nullopt;
        int value = 0;
        for (char digit : text.substr(0, width)) {
            if (!std::isdigit(static_cast<unsigned char>(digit))) return std::nullopt;
            value = value * 10 + (digit - '0');
        }
        *fieldOf(local, field) = value - offsetOf(field);
        text.remove_prefix(width);
    }
    if (!text.empty()) return std::nullopt;

    const std::tm asWritten = local;
    local.tm_isdst = -1;
    const std::time_t moment = mktime(&local);
    // mktime carries what is out of range into the next field: 31 February would be March.
    const bool namesADay = local.tm_year == asWritten.tm_year && local.tm_mon == asWritten.tm_mon &&
                           local.tm_mday == asWritten.tm_mday && asWritten.tm_hour < 24 && asWritten.tm_min < 60 &&
                           asWritten.tm_sec < 60;
    if (!namesADay) return std::nullopt;
    return Date::dateWithTimeIntervalSince1970(static_cast<double>(moment));
}

}  // namespace stowhaven
