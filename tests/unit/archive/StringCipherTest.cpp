#include "archive/StringCipher.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

// The exact text, as openssl makes it with the built-in key, is checked against openssl itself.
TEST(StringCipherTest, CutsTextsAt44Characters) {
    const std::string fortyFour(44, 'k');
    EXPECT_EQ(StringCipher::encrypt(fortyFour + "ABCDEF"), StringCipher::encrypt(fortyFour));
    EXPECT_NE(StringCipher::encrypt(std::string(43, 'k') + "ABCDEF"), StringCipher::encrypt(std::string(43, 'k')));
    // Characters count as the device counts them: é is one, an emoji two.
    const std::string accented = std::string(43, 'k') + "\xc3\xa9";
    EXPECT_EQ(StringCipher::encrypt(accented + "tail"), StringCipher::encrypt(accented));
    const std::string emoji = "\xf0\x9f\x94\x91";
    EXPECT_EQ(StringCipher::decrypt(StringCipher::encrypt(std::string(42, 'k') + emoji + "tail")),
              std::string(42, 'k') + emoji);
    EXPECT_EQ(StringCipher::decrypt(StringCipher::encrypt(std::string(43, 'k') + emoji)), std::string(43, 'k'))
        << "an emoji that would be split is left out";
}

TEST(StringCipherTest, DecipheringUndoesEnciphering) {
    for (const std::string& text : {std::string(), std::string("k"), std::string("0123456789abcdef"),
                                    std::string("caf\xc3\xa9 \xf0\x9f\x94\x91"), std::string(44, 'z')}) {
        const std::string hex = StringCipher::encrypt(text);
        EXPECT_EQ(StringCipher::decrypt(hex), text);
    }
}

TEST(StringCipherTest, RefusesWhatItDidNotEncipher) {
    const std::string good = StringCipher::encrypt("my secret key");
    std::string tampered = good;
    tampered.back() = tampered.back() == '0' ? '1' : '0';
    for (const std::string& bad : {std::string(), good.substr(1), good.substr(2), good + "00", good + "G0",
                                   "zz" + good.substr(2), tampered, std::string(32, '0')}) {
        EXPECT_EQ(StringCipher::decrypt(bad), std::nullopt) << bad;
    }
}

}  // namespace
}  // namespace stowhaven
