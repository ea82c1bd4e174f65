#include "platform/plist/PlistCodec.h"

#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/plist/LibplistConversion.h"
#include "platform/plist/NestingGuard.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace stowhaven {

namespace {

constexpr std::string_view kBinaryHeader = "bplist00";

libplist::Node parseBinary(std::string_view bytes) {
    if (!binaryPlistNestingWithin(bytes, PlistCodec::kMaximumNesting)) {
        SH_LOG("Refused a binary property list: damaged or nested deeper than {} levels", PlistCodec::kMaximumNesting);
        return nullptr;
    }
    plist_t node = nullptr;
    plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &node);
    return libplist::Node(node);
}

// XML writes a date as its year, month, day and time; libplist writes an empty date for
// one it can't break down, and years beyond four digits so that they read back as others.
// From 0001-01-01 up to 10000-01-01, in seconds since the reference date.
constexpr double kFirstXmlDate = -63113904000.0;
constexpr double kEndOfXmlDates = 252423993600.0;

// The value has been checked to nest no deeper than kMaximumNesting.
bool datesFitXml(const PlistValue& value) {
    if (const auto date = value.asDate()) {
        const double seconds = date->timeIntervalSinceReferenceDate();
        return seconds >= kFirstXmlDate && seconds < kEndOfXmlDates;
    }
    if (const auto* array = value.asArray()) return std::all_of(array->begin(), array->end(), datesFitXml);
    if (const auto* dictionary = value.asDictionary()) {
        return std::all_of(dictionary->begin(), dictionary->end(),
                           [](const auto& entry) { return datesFitXml(entry.second); });
    }
    return true;
}

libplist::Node parseXml(std::string_view bytes) {
    if (!xmlPlistNestingWithin(bytes, PlistCodec::kMaximumNesting)) {
        SH_LOG("Refused an XML property list nested deeper than {} levels", PlistCodec::kMaximumNesting);
        return nullptr;
    }
    // A terminated copy, so that no scan in the parser can run past the end.
    const std::string text(bytes);
    plist_t node = nullptr;
    plist_from_xml(text.c_str(), static_cast<std::uint32_t>(text.size()), &node);
    return libplist::Node(node);
}

}  // namespace

std::optional<PlistValue> PlistCodec::parse(std::string_view bytes) {
    if (bytes.empty() || bytes.size() > kMaximumSize) {
        SH_LOG("Refused a property list of {} bytes", bytes.size());
        return std::nullopt;
    }
    const bool binary = bytes.starts_with(kBinaryHeader);
    const libplist::Node node = binary ? parseBinary(bytes) : parseXml(bytes);
    if (!node) {
        SH_LOG("Couldn't read a {} property list of {} bytes", binary ? "binary" : "XML", bytes.size());
        return std::nullopt;
    }
    std::string reason;
    auto value = libplist::valueFromNode(node.get(), reason);
    if (!value) SH_LOG("Couldn't read a property list: {}", reason);
    return value;
}

std::optional<std::string> PlistCodec::serialize(const PlistValue& value, PlistFormat format) {
    std::string reason;
    const libplist::Node node = libplist::nodeFromValue(value, kMaximumNesting, reason);
    if (!node) {
        SH_LOG("Can't write a property list holding {}", reason);
        return std::nullopt;
    }
    if (format == PlistFormat::Xml && !datesFitXml(value)) {
        SH_LOG("Can't write a property list holding a date XML can't hold, before year 1 or after year 9999");
        return std::nullopt;
    }
    char* raw = nullptr;
    std::uint32_t length = 0;
    if (format == PlistFormat::Binary) {
        plist_to_bin(node.get(), &raw, &length);
    } else {
        plist_to_xml(node.get(), &raw, &length);
    }
    const libplist::Malloced<char> bytes(raw);
    if (!bytes || length > kMaximumSize) {
        SH_LOG("Couldn't write a property list of {} bytes", length);
        return std::nullopt;
    }
    return std::string(bytes.get(), length);
}

std::optional<PlistValue> PlistCodec::readFile(const std::string& path) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    if (error) {
        SH_LOG("Couldn't read <{}>: {}", path, error.message());
        return std::nullopt;
    }
    if (size > kMaximumSize) {
        SH_LOG("Refused <{}>: {} bytes is more than a property list may have", path, size);
        return std::nullopt;
    }
    std::string reason;
    const auto bytes = FileManager::contentsOfFile(path, &reason);
    if (!bytes) {
        SH_LOG("{}", reason);
        return std::nullopt;
    }
    auto value = parse(*bytes);
    if (!value) SH_LOG("<{}> is no property list", path);
    return value;
}

bool PlistCodec::writeFile(const std::string& path, const PlistValue& value, PlistFormat format, unsigned mode) {
    const auto bytes = serialize(value, format);
    if (!bytes) return false;
    std::string reason;
    if (!FileManager::writeFile(path, *bytes, &reason, mode)) {
        SH_LOG("{}", reason);
        return false;
    }
    return true;
}

}  // namespace stowhaven
