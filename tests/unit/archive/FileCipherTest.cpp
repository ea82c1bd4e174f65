#include "archive/BuiltInCipherKey.h"
#include "archive/FileCipher.h"
#include "support/FakeServices.h"

#include <gtest/gtest.h>

namespace stowhaven {
namespace {

const std::string kPassPhrase(BuiltInCipherKey::kKeyHex);

TEST(FileCipherTest, CommandsAreTheTemplatesFilledIn) {
    EXPECT_EQ(FileCipher::encryptCommand("/var/tmp/CONTACTS.tar", "/var/tmp/stowhaven/x1"),
              "(openssl enc -e -a -salt -aes-256-cbc -in \"/var/tmp/CONTACTS.tar\" -k \"" + kPassPhrase +
                  "\" -out \"/var/tmp/stowhaven/x1\") && (mv \"/var/tmp/stowhaven/x1\" \"/var/tmp/CONTACTS.tar\")");
    EXPECT_EQ(FileCipher::decryptCommand("/var/tmp/cydiaApps.uue", "/var/tmp/stowhaven/x2"),
              "(openssl enc -d -a -salt -aes-256-cbc -in \"/var/tmp/cydiaApps.uue\" -k \"" + kPassPhrase +
                  "\" -out \"/var/tmp/stowhaven/x2\") && (mv \"/var/tmp/stowhaven/x2\" \"/var/tmp/cydiaApps.uue\")");
}

TEST(FileCipherTest, PathsCanRunNothing) {
    const std::string command = FileCipher::encryptCommand(R"(/tmp/a "b" $(reboot) `id` \x)", "/tmp/t$HOME");
    EXPECT_NE(command.find(R"(-in "/tmp/a \"b\" \$(reboot) \`id\` \\x")"), std::string::npos) << command;
    EXPECT_NE(command.find(R"(-out "/tmp/t\$HOME")"), std::string::npos) << command;
}

TEST(FileCipherTest, RunsItsCommandThroughTheShell) {
    test::FakeServices services;
    FileCipher::encryptFileAtPath("/var/tmp/a", "/var/tmp/t");
    FileCipher::decryptFileAtPath("/var/tmp/a", "/var/tmp/t");
    EXPECT_EQ(services.shell.commands, (std::vector<std::string>{FileCipher::encryptCommand("/var/tmp/a", "/var/tmp/t"),
                                                                 FileCipher::decryptCommand("/var/tmp/a", "/var/tmp/t")}));
}

}  // namespace
}  // namespace stowhaven
