#include "platform/plist/PlistValue.h"

#include <fmt/format.h>

#include <cmath>
#include <limits>

namespace stowhaven {

namespace {

// Data beyond this many bytes is shortened in descriptions.
constexpr std::size_t kDescribedDataBytes = 32;

// A double that fits no std::int64_t saturates; converting it directly would be undefined.
std::int64_t saturatedInteger(double value) {
    constexpr double kTwoToThe63 = 9223372036854775808.0;
    if (std::isnan(value)) return 0;
    if (value >= kTwoToThe63) return std::numeric_limits<std::int64_t>::max();
    if (value < -kTwoToThe63) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

void appendQuoted(std::string& out, const std::string& text) {
    out += '"';
    for (const char c : text) {
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    out += fmt::format("\\u{:04x}", static_cast<unsigned>(c));
                } else {
                    out += c;
                }
        }
    }
    out += '"';
}

}  // namespace

PlistValue PlistValue::uid(std::uint64_t value) { return PlistValue(Storage(Uid{value})); }

PlistKind PlistValue::kind() const {
    // In the order of the alternatives of Storage.
    static constexpr PlistKind kKinds[] = {PlistKind::Null,       PlistKind::Boolean, PlistKind::Integer,
                                           PlistKind::Integer,    PlistKind::Real,    PlistKind::String,
                                           PlistKind::Data,       PlistKind::Date,    PlistKind::Array,
                                           PlistKind::Dictionary, PlistKind::Uid};
    static_assert(std::size(kKinds) == std::variant_size_v<Storage>);
    return kKinds[storage_.index()];
}

std::optional<bool> PlistValue::asBoolean() const {
    if (const auto* value = std::get_if<bool>(&storage_)) return *value;
    return std::nullopt;
}

std::optional<std::int64_t> PlistValue::asInteger() const {
    if (const auto* value = std::get_if<std::int64_t>(&storage_)) return *value;
    return std::nullopt;
}

std::optional<std::uint64_t> PlistValue::asUnsignedInteger() const {
    if (const auto* value = std::get_if<LargeUnsigned>(&storage_)) return value->value;
    if (const auto* value = std::get_if<std::int64_t>(&storage_); value && *value >= 0) {
        return static_cast<std::uint64_t>(*value);
    }
    return std::nullopt;
}

std::optional<double> PlistValue::asReal() const {
    if (const auto* value = std::get_if<double>(&storage_)) return *value;
    return std::nullopt;
}

std::optional<Date> PlistValue::asDate() const {
    if (const auto* value = std::get_if<Date>(&storage_)) return *value;
    return std::nullopt;
}

std::optional<std::uint64_t> PlistValue::asUid() const {
    if (const auto* value = std::get_if<Uid>(&storage_)) return value->value;
    return std::nullopt;
}

std::optional<double> PlistValue::numberAsReal() const {
    if (const auto value = asBoolean()) return *value ? 1.0 : 0.0;
    if (const auto value = asInteger()) return static_cast<double>(*value);
    if (const auto value = asUnsignedInteger()) return static_cast<double>(*value);
    return asReal();
}

std::optional<std::int64_t> PlistValue::numberAsInteger() const {
    if (const auto value = asBoolean()) return *value ? 1 : 0;
    if (const auto value = asInteger()) return *value;
    if (asUnsignedInteger()) return std::numeric_limits<std::int64_t>::max();
    if (const auto value = asReal()) return saturatedInteger(*value);
    return std::nullopt;
}

std::string PlistValue::description() const {
    struct Describer {
        std::string& out;

        void operator()(std::monostate) const { out += "<null>"; }
        void operator()(bool value) const { out += value ? "true" : "false"; }
        void operator()(std::int64_t value) const { out += fmt::format("{}", value); }
        void operator()(LargeUnsigned value) const { out += fmt::format("{}", value.value); }
        void operator()(double value) const {
            std::string text = fmt::format("{}", value);
            // Keeps 1.0 apart from the integer 1.
            if (std::isfinite(value) && text.find_first_of(".e") == std::string::npos) text += ".0";
            out += text;
        }
        void operator()(const std::string& value) const { appendQuoted(out, value); }
        void operator()(const Data& value) const {
            out += '<';
            for (std::size_t i = 0; i < value.size() && i < kDescribedDataBytes; ++i) {
                out += fmt::format("{:02x}", value[i]);
            }
            if (value.size() > kDescribedDataBytes) out += fmt::format("... {} bytes", value.size());
            out += '>';
        }
        void operator()(Date value) const { out += value.description(); }
        void operator()(const Array& value) const {
            out += '(';
            for (std::size_t i = 0; i < value.size(); ++i) {
                if (i > 0) out += ", ";
                std::visit(*this, value[i].storage_);
            }
            out += ')';
        }
        void operator()(const Dictionary& value) const {
            out += '{';
            for (const auto& [key, element] : value) {
                appendQuoted(out, key);
                out += " = ";
                std::visit(*this, element.storage_);
                out += "; ";
            }
            out += '}';
        }
        void operator()(Uid value) const { out += fmt::format("<uid {}>", value.value); }
    };
    std::string out;
    std::visit(Describer{out}, storage_);
    return out;
}

const PlistValue* valueForKey(const PlistValue::Dictionary& dictionary, std::string_view key) {
    const auto found = dictionary.find(key);
    return found == dictionary.end() ? nullptr : &found->second;
}

const std::string* stringForKey(const PlistValue::Dictionary& dictionary, std::string_view key) {
    const PlistValue* value = valueForKey(dictionary, key);
    return value == nullptr ? nullptr : value->asString();
}

}  // namespace stowhaven
