#include "core/LanguageOrder.h"
#include "support/TestFolder.h"
#include "support/CapturedLog.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

using Array = PlistValue::Array;

class LanguageOrderTest : public ::testing::Test {
protected:
    // The languages as the next start of the program finds them in the file.
    std::optional<Array> storedLanguages() const { return PreferenceStore(path_).array("AppleLanguages"); }

    test::TestFolder folder_;
    const std::string path_ = folder_ / "com.larkmoor.stowhaven.plist";
    PreferenceStore defaults_{path_};
    test::CapturedLog log_;
};

TEST_F(LanguageOrderTest, EnglishIsSwappedIntoFirstPlace) {
    LanguageOrder::setUp(defaults_, {"fr", "de", "en", "it"});
    EXPECT_EQ(storedLanguages(), (Array{"en", "de", "fr", "it"}));
    EXPECT_TRUE(log_.contains("Localization NOT Enabled!"));
    EXPECT_TRUE(log_.contains("LANG:en | LOCALE:"));
}

TEST_F(LanguageOrderTest, WithoutEnglishAmongThemTheLanguagesAreJustEnglish) {
    for (const std::vector<std::string>& system : {std::vector<std::string>{"de-DE", "fr", "en-GB"}, {}}) {
        LanguageOrder::setUp(defaults_, system);
        EXPECT_EQ(storedLanguages(), (Array{"en"}));
    }
}

TEST_F(LanguageOrderTest, TheSystemsLanguagesReplaceThoseOfAnEarlierStart) {
    defaults_.set("AppleLanguages", Array{"en", "fr"});
    LanguageOrder::setUp(defaults_, {"it", "en"});
    EXPECT_EQ(storedLanguages(), (Array{"en", "it"}));
}

TEST_F(LanguageOrderTest, WithLocalizationEnabledTheSystemsOrderStands) {
    defaults_.set("AppleLanguages", Array{"en", "fr"});
    defaults_.set("EnableLocalization", true);

    LanguageOrder::setUp(defaults_, {"fr", "en"});

    EXPECT_FALSE(PreferenceStore(path_).keyExists("AppleLanguages"));
    EXPECT_TRUE(log_.contains("Localization Enabled!"));
    EXPECT_TRUE(log_.contains("LANG:fr | LOCALE:"));
}

}  // namespace
}  // namespace stowhaven
