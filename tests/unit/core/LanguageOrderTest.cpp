#include "core/LanguageOrder.h"
#include "support/TestFolder.h"

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
};

// Each start replaces what an earlier one stored.
TEST_F(LanguageOrderTest, EnglishIsSwappedIntoFirstPlaceOrIsTheOnlyLanguage) {
    defaults_.set("AppleLanguages", Array{"en", "fr"});
    const std::pair<std::vector<std::string>, Array> cases[] = {
        {{"fr", "de", "en", "it"}, {"en", "de", "fr", "it"}},
        {{"it", "en"}, {"en", "it"}},
        {{"de-DE", "fr", "en-GB"}, {"en"}},
        {{}, {"en"}},
    };
    for (const auto& [system, stored] : cases) {
        LanguageOrder::setUp(defaults_, system);
        EXPECT_EQ(storedLanguages(), stored);
    }
}

TEST_F(LanguageOrderTest, WithLocalizationEnabledTheSystemsOrderStands) {
    defaults_.set("AppleLanguages", Array{"en", "fr"});
    defaults_.set("EnableLocalization", true);

    LanguageOrder::setUp(defaults_, {"fr", "en"});

    EXPECT_FALSE(PreferenceStore(path_).keyExists("AppleLanguages"));
}

}  // namespace
}  // namespace stowhaven
