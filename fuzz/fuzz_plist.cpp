// The property-list reader on any bytes, binary or XML, as the settings file, the device's
// own plists and the plists inside sessions reach it. Whatever it reads, the binary writer
// writes (settings are written so), and what either writer writes reads back as the same
// value; a settings file of those bytes reads as the same settings, and a change to them
// can still be written.

#include "FuzzSupport.h"
#include "platform/PreferenceStore.h"
#include "platform/plist/PlistCodec.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

using namespace stowhaven;

bool sameNumber(double left, double right) { return left == right || (std::isnan(left) && std::isnan(right)); }

// Equal values, a NaN being equal to a NaN. The writers may share equal objects or not,
// so the bytes they write can differ where the values don't.
bool sameValue(const PlistValue& left, const PlistValue& right) {
    if (left.kind() != right.kind()) return false;
    if (left.isReal()) return sameNumber(*left.asReal(), *right.asReal());
    if (left.isDate()) {
        return sameNumber(left.asDate()->timeIntervalSinceReferenceDate(),
                          right.asDate()->timeIntervalSinceReferenceDate());
    }
    if (const auto* array = left.asArray()) {
        const auto* other = right.asArray();
        if (array->size() != other->size()) return false;
        for (std::size_t index = 0; index < array->size(); ++index) {
            if (!sameValue((*array)[index], (*other)[index])) return false;
        }
        return true;
    }
    if (const auto* dictionary = left.asDictionary()) {
        const auto* other = right.asDictionary();
        if (dictionary->size() != other->size()) return false;
        for (auto entry = dictionary->begin(), match = other->begin(); entry != dictionary->end(); ++entry, ++match) {
            if (entry->first != match->first || !sameValue(entry->second, match->second)) return false;
        }
        return true;
    }
    return left == right;
}

std::optional<PlistValue> writtenAndRead(const PlistValue& value, PlistFormat format) {
    const auto written = PlistCodec::serialize(value, format);
    if (!written) return std::nullopt;
    const auto reread = PlistCodec::parse(*written);
    fuzz::expect(reread.has_value(), "what is written reads back");
    return reread;
}

void checkWritesBack(const PlistValue& value) {
    const auto binary = writtenAndRead(value, PlistFormat::Binary);
    fuzz::expect(binary.has_value(), "whatever is read can be written");
    fuzz::expect(sameValue(*binary, value), "binary written reads back as the same value");
    // XML keeps dates to the second and holds fewer of them: the second pass must change
    // nothing of the first.
    if (const auto xml = writtenAndRead(value, PlistFormat::Xml)) {
        const auto again = writtenAndRead(*xml, PlistFormat::Xml);
        fuzz::expect(again && sameValue(*again, *xml), "XML written reads back as the same value");
    }
}

void checkSettingsFile(std::string_view bytes, const PlistValue::Dictionary& settings) {
    const std::string path = fuzz::writtenToDevice("settings.plist", bytes);
    PreferenceStore store(path);
    fuzz::expect(sameValue(store.dictionaryRepresentation(), settings), "the settings file reads as its plist");
    fuzz::expect(store.set("FuzzedChange", true), "a change to settings read from the file can be written");
    PlistValue::Dictionary changed = settings;
    changed.insert_or_assign("FuzzedChange", true);
    fuzz::expect(sameValue(PreferenceStore(path).dictionaryRepresentation(), changed),
                 "the changed settings read back");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = fuzz::bytesOf(data, size);
    fuzz::useFuzzingDevice();
    const auto value = PlistCodec::parse(bytes);
    if (!value) return 0;
    checkWritesBack(*value);
    if (const auto* settings = value->asDictionary()) checkSettingsFile(bytes, *settings);
    return 0;
}
