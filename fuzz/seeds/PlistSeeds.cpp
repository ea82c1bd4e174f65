// Property lists of the shapes the program reads: its settings file as it writes it
// (binary) and as a user may leave it (XML), a device plist as the device writes it, and
// one value of every kind, in both encodings.

#include "platform/plist/PlistCodec.h"
#include "seeds/Seeds.h"

namespace stowhaven::fuzz {

namespace {

using Array = PlistValue::Array;
using Dictionary = PlistValue::Dictionary;

PlistValue settings() {
    return Dictionary{{"CurrentStorageType", 6},
                      {"SoundEnabled", true},
                      {"MinDeviceBatteryLevel", 0.25},
                      {"MaximumBackupsInFTP", 10},
                      {"FTPServer", "ftp.example.org"},
                      {"FTPPassword", "s3cr\xc3\xa9t"},
                      {"DefaultSources_Backup", Array{"deb:http://apt.example.org/:./"}},
                      {"LastBackupDate", Date(436000000.5)},
                      {"DropboxCredentials", PlistValue::data(std::string("\x00\x01token\xff", 9))}};
}

PlistValue everyKind() {
    return Array{true,
                 false,
                 0,
                 -1,
                 255,
                 65536,
                 std::uint64_t{18446744073709551615u},
                 -2.5e-300,
                 "ascii",
                 "\xe6\x97\xa5\xe6\x9c\xac",
                 PlistValue::data(""),
                 Date(-978307200),
                 Array{},
                 Dictionary{},
                 Dictionary{{"CF$UID", 7}},
                 PlistValue::uid(3)};
}

// As the device writes its own: a declaration, a document type, tabs.
constexpr const char* kSystemVersion = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>BuildID</key>
	<string>7A3C2E9E-1B2F-11E4-9B9E-2C1E5B3F4A6D</string>
	<key>ProductBuildVersion</key>
	<string>12B440</string>
	<key>ProductCopyright</key>
	<string>1983-2014 Example Inc.</string>
	<key>ProductName</key>
	<string>iPhone OS</string>
	<key>ProductVersion</key>
	<string>8.1.2</string>
	<key>Measured</key>
	<array>
		<real>1.5</real>
		<integer>-7</integer>
		<date>2014-12-09T10:00:00Z</date>
		<data>
		AAEC/w==
		</data>
		<true/>
		<dict/>
	</array>
</dict>
</plist>
)";

}  // namespace

void writePlistSeeds(const std::filesystem::path& folder) {
    const SeedCorpus corpus(folder, "plist");
    corpus.add("settings.bplist", *PlistCodec::serialize(settings(), PlistFormat::Binary));
    corpus.add("settings.xml", *PlistCodec::serialize(settings(), PlistFormat::Xml));
    corpus.add("every-kind.bplist", *PlistCodec::serialize(everyKind(), PlistFormat::Binary));
    corpus.add("every-kind.xml", *PlistCodec::serialize(everyKind(), PlistFormat::Xml));
    corpus.add("SystemVersion.plist", kSystemVersion);
    corpus.add("SystemVersion.bplist", *PlistCodec::serialize(*PlistCodec::parse(kSystemVersion), PlistFormat::Binary));
}

}  // namespace stowhaven::fuzz
