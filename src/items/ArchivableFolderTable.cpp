#include "items/ArchivableFolderTable.h"

#include "platform/Date.h"
#include "platform/Platform.h"

#include <algorithm>

namespace stowhaven {

namespace {

using Condition = ArchivableFolderRow::Condition;

constexpr const char* kCopic = "/var/mobile/Library/Preferences/com.iarrays.copic.plist";
constexpr const char* kProTube = "/var/mobile/Library/ProTube";
constexpr const char* kFlex = "/var/mobile/Documents/Flex";
constexpr const char* kAutoTouch = "/var/mobile/Library/AutoTouch";
constexpr const char* kTouchPose = "/Library/Application Support/TouchPose";
constexpr const char* kWeeTrackData = "/var/mobile/Library/WeeTrackData/weetrackdata.sqlite";
constexpr const char* kMailEnhancer = "/var/mobile/Library/Preferences/org.thebigboss.mailenhancerpro.sql";

// By row number; names in upper case are keys of the strings table.
constexpr std::array<ArchivableFolderRow, 49> kRows = {{
    {"Copic", nullptr, "com.iarrays.copic", 0, {kCopic}, true, false, false},
    {"Copic Beta", nullptr, "com.iarrays.copic10", 0, {kCopic}, true, false, false},
    {nullptr,
     "IFILE_BOOKMARKS",
     "eu.heinelt.ifile",
     1,
     {"/var/mobile/Library/iFile/Bookmarks.plist"},
     true,
     false,
     false},
    {"SHSH Blobs", nullptr, "com.aerialx.ishshit", 2, {"/var/mobile/Media/SHSH"}, false, true, false},
    {"Safari Download Manager",
     nullptr,
     "net.howett.safaridownloadmanager",
     24,
     {"/var/mobile/Media/Downloads"},
     false,
     true,
     false},
    {"Audio Recorder",
     nullptr,
     "net.limneos.callrecorder",
     47,
     {"/var/mobile/Documents/AudioRecorder"},
     false,
     true,
     false},
    {"Iconoclasm layouts", nullptr, "net.r-ch.iconoclasm", 23, {"/Library/Iconoclasm/Layouts"}, false, true, false},
    {"iBlackList", nullptr, "iblacklist", 17, {"/var/mobile/Library/iBlacklist"}, false, false, false},
    {"biteSMS", nullptr, "bitesms", 19, {"/var/mobile/Library/biteSMS"}, false, false, false},
    {"SBProfiles",
     nullptr,
     "org.thebigboss.sbprofiles",
     20,
     {"/var/mobile/Library/Preferences/com.gck.sbprofiles.plist"},
     true,
     false,
     false},
    {"Flex 2", nullptr, "com.fuyuchi.flex2", 21, {kFlex}, false, false, false},
    {"Flex Beta", nullptr, "flex2packagebeta", 21, {kFlex}, false, false, false},
    {"Springtomize 2",
     nullptr,
     "com.filippobiga.springtomize2",
     18,
     {"/var/mobile/Library/Preferences/com.filippobiga.springtomize.plist"},
     true,
     false,
     false},
    {"Springtomize 3",
     nullptr,
     "com.filippobiga.springtomize3",
     27,
     {"/var/mobile/Library/Preferences/com.filippobiga.springtomize3.plist"},
     true,
     false,
     false},
    {"ProTube", nullptr, "org.thebigboss.protube", 12, {kProTube}, false, true, false},
    {"ProTubeHD", nullptr, "org.thebigboss.protubehd", 13, {kProTube}, false, true, false},
    {"Activator", nullptr, "libactivator", 14, {"/var/mobile/Library/Caches/libactivator.plist"}, true, false, false},
    {"ActionMenu",
     nullptr,
     "actionmenu",
     16,
     {"/var/mobile/Library/Preferences/com.Quillfeed.FavoritesAction.favorites.plist",
      "/var/mobile/Library/Keyboard/user_favorites.plist"},
     true,
     false,
     false},
    {"SBSettings",
     nullptr,
     "sbsettings",
     15,
     {"/var/mobile/Library/Preferences/com.iptm.bigboss.sbsettings.plist"},
     true,
     false,
     false},
    {nullptr,
     "KEYBOARD_SHORTCUTS",
     "",
     3,
     {"/var/mobile/Library/Keyboard/UserDictionaryWordKeyPairs.plist",
      "/var/mobile/Library/Keyboard/UserDictionary.sqlite", "/var/mobile/Library/Keyboard/CoreDataUbiquitySupport"},
     true,
     false,
     false,
     Condition::Always,
     true},
    {"Summerboard {}", "THEMES", "", 22, {"/var/mobile/Library/SummerBoard/Themes"}, false, true, false},
    {"Winterboard {}", "THEMES", "", 6, {"/Library/Themes/"}, false, true, false},
    {nullptr, "ROMS_GAMES", "", 5, {"/var/mobile/Media/ROMs"}, false, true, true},
    {"MxTube", nullptr, "com.mxweas.mxtube", 11, {"/var/mobile/Media/MxTube"}, false, true, false},
    {nullptr, "RINGTONES_CYDIA", "", 4, {"/Library/Ringtones/"}, false, true, false},
    {nullptr, "RINGTONES_ITUNES", "", 26, {"/var/mobile/Media/iTunes_Control/Ringtones"}, false, true, false},
    {nullptr, "WEB_CLIPS", "", 9, {"/var/mobile/Library/WebClips"}, false, true, false},
    {"ActionSlider", nullptr, "org.thebigboss.actionslider", 28, {"/Library/ASThemes"}, true, false, false},
    {"ASUpdateHider",
     nullptr,
     "it.marcocristalli.asupdatehider",
     29,
     {"/var/mobile/Library/Keyboard/it.marcocristalli.asupdatehider.license"},
     true,
     false,
     false},
    {"AutoTouch", nullptr, "me.autotouch.autotouch", 30, {kAutoTouch}, false, false, false},
    {"AutoTouch (iOS7)", nullptr, "me.autotouch.autotouch.ios7", 30, {kAutoTouch}, false, false, false},
    {"Biolockdown",
     nullptr,
     "com.Quillfeed.biolockdown",
     31,
     {"/var/mobile/Library/com.Quillfeed.biolockdown.plist"},
     true,
     false,
     false},
    {"Captureview",
     nullptr,
     "org.ioshack.captureview",
     32,
     {"/var/mobile/Library/Keyboard/org.ioshack.captureview.license"},
     true,
     false,
     false},
    {"Hosts file", nullptr, "", 33, {"/private/etc/hosts"}, true, false, false},
    {"MobileTerminal",
     nullptr,
     "mobileterminal-applesdk",
     34,
     {"/Applications/Terminal.app/GestureInputActions.plist"},
     true,
     false,
     false},
    {"Printify", nullptr, "me.qusic.printify", 35, {"/var/mobile/Documents/Printify"}, false, false, false},
    {"SuperRecorder", nullptr, "org.hacx.superrecorder", 36, {"/var/mobile/Media/DCIM/hAcx"}, false, false, false},
    {"TouchPose", nullptr, "kr.iolate.touchpose", 37, {kTouchPose}, false, false, false},
    {"TouchPose+", nullptr, "kr.iolate.touchposeplus", 38, {kTouchPose}, false, false, false},
    {"WeeTrackData", nullptr, "de.richtownapps.weetrackdata", 39, {kWeeTrackData}, true, false, false},
    {"WeeTrackData 7", nullptr, "de.halfco.weetrackdata7", 39, {kWeeTrackData}, true, false, false},
    {"BytaFont", nullptr, "com.ipr.bytafont", 41, {"/var/mobile/Library/MyFonts"}, false, false, false},
    {"BytaFont2", nullptr, "com.bytafont.bytafont2", 42, {"/var/mobile/Library/MyFonts2"}, false, false, false},
    // Not a file, though the place is the same file as the three below: kept as it is.
    {"MailEnhancer for iOS 4 & iOS 5",
     nullptr,
     "org.thebigboss.mailenhancer",
     43,
     {kMailEnhancer},
     false,
     false,
     false},
    {"MailEnhancer for iOS5", nullptr, "org.thebigboss.mailenhancerpro", 44, {kMailEnhancer}, true, false, false},
    {"MailEnhancer for iOS6", nullptr, "org.thebigboss.mailenhancerpro2", 45, {kMailEnhancer}, true, false, false},
    {"MailEnhancer for iOS7", nullptr, "org.thebigboss.mailenhancerpro3", 46, {kMailEnhancer}, true, false, false},
    {nullptr, "VOICEMAIL", "", 7, {"/var/mobile/Library/Voicemail"}, false, false, false, Condition::IPhoneOnly},
    {nullptr,
     "VOICEMEMOS",
     "",
     10,
     {"/var/mobile/Media/Recordings"},
     false,
     false,
     false,
     Condition::WithVoiceMemosApplication},
}};

struct TypeFacts {
    std::int32_t type;
    const char* archiveName;  // none: a dated name of its own
    const char* icon;
    const char* defaultKey;  // none for most
};

// "ASUpdateHier" is spelled so: archives have that name.
constexpr std::array<TypeFacts, 46> kTypes = {{
    {0, "Copic", "Copic", nullptr},
    {1, "iFile", "iFile", nullptr},
    {2, "ishsh_blobs", "iSHSHit", "DefaultSHSH"},
    {3, "keyboardShortcuts", "keyboard_shortcuts", nullptr},
    {4, "RingtonesCydia", "ringtone", "DefaultRingtonesCydia"},
    {5, "ROMs-Games", "romGames", "DefaultROMGames"},
    {6, "WinterBoardThemes", "themes", "DefaultWinterboardThemes"},
    {7, "Voicemail", "voicemail", nullptr},
    {9, "Webclips", "safari-webclip", "DefaultWebClips"},
    {10, "VoiceMemos", "VoiceMemos", nullptr},
    {11, "MxTubes", "MxTube", "DefaultMXTubes"},
    {12, "Protube", "ProTube", "DefaultProTube"},
    {13, "Protube", "ProTubeHD", "DefaultProTube"},
    {14, "Activator", "Activator", nullptr},
    {15, "SBSettings", "SBSettings", nullptr},
    {16, "ActionMenu", "ActionMenu", nullptr},
    {17, "iBlacklist", "iBlacklist", nullptr},
    {18, "Springtomize", "Springtomize", nullptr},
    {19, "BiteSMS", "biteSMS", nullptr},
    {20, "SBProfiles", "SBProfiles", nullptr},
    {21, "Flex", "Flex", nullptr},
    {22, "SummerboardThemes", "themes", "DefaultSummerboardThemes"},
    {23, "Iconoclasm", "Iconoclasm", "DefaultIconoclasm"},
    {24, "SafariDownloadManager", "SafariDownloader", "DefaultSafariDownloadManager"},
    {25, "Flex", "Flex", nullptr},
    {26, "RingtonesiTunes", "ringtone", "DefaultRingtonesiTunes"},
    {27, "Springtomize", "Springtomize", nullptr},
    {28, "ActionSlider", "ActionSlider", nullptr},
    {29, "ASUpdateHier", "ASUpdateHider", nullptr},
    {30, "AutoTouch", "AutoTouch", nullptr},
    {31, "Biolockdown", "Biolockdown", nullptr},
    {32, nullptr, "CaptureView", nullptr},
    {33, "Host", "Hosts", nullptr},
    {34, "MobileTerminal", "MobileTerminal", nullptr},
    {35, "Printify", "Printify", nullptr},
    {36, "SuperRecorder", "SuperRecorder", nullptr},
    {37, "TouchPose", "TouchPose", nullptr},
    {38, "TouchPose", "TouchPose", nullptr},
    {39, "WeeTrackData", "WeeTrackData", nullptr},
    {40, "WeeTrackData", "WeeTrackData", nullptr},
    {41, "BytaFont", "BytaFont", nullptr},
    {42, "BytaFont", "BytaFont", nullptr},
    {43, "MailEnhancer", "MailEnhancer", nullptr},
    {44, "MailEnhancer", "MailEnhancer", nullptr},
    {45, "MailEnhancer", "MailEnhancer", nullptr},
    {46, "MailEnhancer", "MailEnhancer", nullptr},
}};

const TypeFacts* factsOf(std::int32_t type) {
    const auto found =
        std::find_if(kTypes.begin(), kTypes.end(), [&](const TypeFacts& facts) { return facts.type == type; });
    return found == kTypes.end() ? nullptr : &*found;
}

}  // namespace

std::span<const ArchivableFolderRow> ArchivableFolderTable::rows() { return kRows; }

bool ArchivableFolderTable::isPlaceOf(std::int32_t type, const std::string& path) {
    return std::any_of(std::begin(kRows), std::end(kRows), [&](const ArchivableFolderRow& row) {
        return row.type == type && std::any_of(row.paths.begin(), row.paths.end(), [&](const char* place) {
                   return place != nullptr && path == place;
               });
    });
}

std::string ArchivableFolderTable::archiveName(std::int32_t type) {
    const TypeFacts* facts = factsOf(type);
    if (facts != nullptr && facts->archiveName != nullptr) return facts->archiveName;
    return "Unknown-" + Platform::current().clock().date().description();
}

std::string ArchivableFolderTable::iconName(std::int32_t type) {
    const TypeFacts* facts = factsOf(type);
    return facts != nullptr ? facts->icon : "";
}

std::optional<std::string> ArchivableFolderTable::defaultKey(std::int32_t type) {
    const TypeFacts* facts = factsOf(type);
    if (facts == nullptr || facts->defaultKey == nullptr) return std::nullopt;
    return facts->defaultKey;
}

}  // namespace stowhaven
