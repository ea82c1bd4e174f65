#include "items/RepositorySource.h"

#include "archive/KeyedArchiver.h"
#include "archive/KeyedUnarchiver.h"
#include "core/Text.h"
#include "items/SelectionDefaults.h"

#include <fmt/format.h>

#include <array>

namespace stowhaven {

namespace {

constexpr std::string_view kHttpScheme = "http://";

SelectionDefaults& defaultLists() {
    static SelectionDefaults lists("DefaultSources_Backup", "DefaultSources_Restore");
    return lists;
}

struct WellKnownSource {
    const char* address;
    const char* name;
    const char* image;
};

// Checked after parseLink has turned every "http://" name into a host, so no row ever
// matches; the order of those two steps is kept all the same.
constexpr std::array<WellKnownSource, 9> kWellKnownSources = {{
    {"http://apt.bigboss.example", "BigBoss", "BigBoss"},
    {"http://apt.modmyi.example", "modmyi.example", "ModMyi"},
    {"http://repo.brackenfold.example", "Brackenfold & MacCiti", "Brackenfold"},
    {"http://repo.quillfeed.example", "Quillfeed", "Quillfeed"},
    {"http://apt.iphone-community.example", "iphone-community.example", "iPhone_org_hk"},
    {"http://repo.xsellize.example", "XSellize", "XSellize"},
    {"http://sinfuliphonerepo.example", "SinfuliPhoneRepo", "sinfuliphonerepo"},
    {"http://apt.insanelyi.example", "insanelyi", "insanelyi"},
    {"http://apt.iarrays.example", "iArrays", "iarrays"},
}};

std::optional<std::string> stringFor(const PlistValue::Dictionary& dictionary, std::string_view key) {
    const std::string* text = stringForKey(dictionary, key);
    return text ? std::optional<std::string>(*text) : std::nullopt;
}

std::vector<std::string> stringsIn(const PlistValue* array) {
    std::vector<std::string> strings;
    if (array == nullptr || !array->isArray()) return strings;
    for (const PlistValue& element : *array->asArray()) {
        if (const std::string* text = element.asString()) strings.push_back(*text);
    }
    return strings;
}

bool isUrlCharacter(char c) {
    static constexpr std::string_view kAllowed = "-._~:/?#[]@!$&'()*+,;=%";
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           kAllowed.find(c) != std::string_view::npos;
}

// The host of an "http://" link; nothing for a link that is no URL or names no host.
std::optional<std::string> hostOf(std::string_view link) {
    if (!link.starts_with(kHttpScheme)) return std::nullopt;
    for (const char c : link) {
        if (!isUrlCharacter(c)) return std::nullopt;
    }
    std::string_view authority = link.substr(kHttpScheme.size());
    authority = authority.substr(0, authority.find_first_of("/?#"));
    if (const auto at = authority.rfind('@'); at != std::string_view::npos) authority.remove_prefix(at + 1);
    if (const auto colon = authority.rfind(':'); colon != std::string_view::npos && !authority.starts_with('[')) {
        authority = authority.substr(0, colon);
    }
    if (authority.empty()) return std::nullopt;
    return std::string(authority);
}

}  // namespace

RepositorySource::RepositorySource(const PlistValue::Dictionary& dictionary)
    : SelectableItem(stringFor(dictionary, "URI").value_or("")),
      link_(stringFor(dictionary, "URI")),
      distribution_(stringFor(dictionary, "Distribution")),
      type_(stringFor(dictionary, "Type")) {
    sections_ = stringsIn(valueForKey(dictionary, "Sections"));
    setSize(0);
    parseLink();
    for (const WellKnownSource& source : kWellKnownSources) {
        if (name().starts_with(source.address)) {
            setName(source.name);
            image_ = source.image;
            break;
        }
    }
    selectStateForOperation(1);
}

RepositorySource::RepositorySource(KeyedUnarchiver& coder)
    : SelectableItem(coder), link_(coder.decodeStringForKey("link")) {
    const auto sections = coder.decodePropertyListForKey("sections");
    sections_ = stringsIn(sections ? &*sections : nullptr);
    distribution_ = coder.decodeStringForKey("distribution");
    type_ = coder.decodeStringForKey("type");
    parseLink();
    selectStateForOperation(0);
}

std::shared_ptr<Codable> RepositorySource::initWithCoder(KeyedUnarchiver& coder) {
    return std::make_shared<RepositorySource>(coder);
}

void RepositorySource::encodeWithCoder(KeyedArchiver& coder) const {
    SelectableItem::encodeWithCoder(coder);
    coder.encodeObject(link_, "link");
    coder.encodeObject(distribution_, "distribution");
    coder.encodeObject(type_, "type");
    coder.encodeObject(PlistValue::Array(sections_.begin(), sections_.end()), "sections");
}

void RepositorySource::parseLink() {
    if (!name().starts_with(kHttpScheme)) return;
    link_ = textutil::replacingAll(name(), " ./", "");
    const auto host = hostOf(*link_);
    setName(host ? textutil::capitalized(*host) : "");
}

void RepositorySource::selectStateForOperation(int operation) {
    const bool backupSide = operation != 0;
    DefaultList& list = defaultLists().side(backupSide);
    setSelected(list.names() ? list.contains(metadataKey()) : backupSide);
}

std::string RepositorySource::metadataKey() const {
    using textutil::orNull;
    return textutil::replacingAll(fmt::format("{}:{}:{}", orNull(type_), orNull(link_), orNull(distribution_)),
                                  " ./:./", "./");
}

std::string RepositorySource::debSourceAsString() const {
    using textutil::orNull;
    if (sections_.empty()) {
        return textutil::replacingAll(fmt::format("{} {} {}", orNull(type_), orNull(link_), orNull(distribution_)),
                                      "./ ./", "./");
    }
    return fmt::format("{} {} {} {}", orNull(type_), orNull(link_), orNull(distribution_), sections_.front());
}

std::string RepositorySource::description() const {
    return fmt::format("RepositorySource -> {} [{:d}] {} - {}", name(), isSelected(), metadataKey(),
                       debSourceAsString());
}

void RepositorySource::resetDefaultLists() { defaultLists().reset(); }

}  // namespace stowhaven
