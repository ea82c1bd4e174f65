#include "cli/TerminalPrompt.h"
#include "cli/TextWrap.h"

#include <gtest/gtest.h>

#include <deque>
#include <sstream>

namespace stowhaven {
namespace {

using Kind = TerminalPrompt::Result::Kind;

// Answers from a script; past its end the input has ended.
struct ScriptedLines final : LineSource {
    ScriptedLines(std::initializer_list<std::string> typed) {
        for (const std::string& text : typed) lines.push_back({InputLine::Kind::Line, text});
    }
    InputLine readLine(bool secret) override {
        secretReads.push_back(secret);
        if (lines.empty()) return {InputLine::Kind::EndOfInput, {}};
        InputLine line = lines.front();
        lines.pop_front();
        return line;
    }

    std::deque<InputLine> lines;
    std::vector<bool> secretReads;
};

const Alert kPassphrase{.title = "Passphrase",
                        .message = "The backup is encrypted.",
                        .buttons = {"Cancel", "OK"},
                        .field = Alert::Field::Secure};

TEST(TerminalPromptTest, ShowsTheAlertAndAsksUntilOneOfTheNumbersIsTyped) {
    ScriptedLines input{"3", "", "yes", "-1", " 2 "};
    std::ostringstream out;
    const auto result =
        TerminalPrompt(input, out, 80)
            .ask({.title = "Delete the backup?", .message = "It can't be undone.", .buttons = {"No", "Yes"}});

    EXPECT_EQ(result.kind, Kind::Answered);
    EXPECT_EQ(result.answer.buttonIndex, 1u);
    EXPECT_TRUE(out.str().starts_with("Delete the backup?\nIt can't be undone.\n  1) No   2) Yes\n> "));
    EXPECT_NE(out.str().find("Type a number from 1 to 2."), std::string::npos) << out.str();
}

TEST(TerminalPromptTest, MessagesAndButtonsKeepToTheWidth) {
    ScriptedLines input{"1"};
    std::ostringstream out;
    TerminalPrompt(input, out, 20)
        .ask({.title = "Storage",
              .message = "Where should backups go now?",
              .buttons = {"Local", "FTP", "Other devices' backups"}});
    EXPECT_EQ(out.str(),
              "Storage\nWhere should backups\ngo now?\n  1) Local\n  2) FTP\n  3) Other devices'\n     backups\n> ");
}

TEST(TerminalPromptTest, ASecureFieldIsReadWithoutEchoAndItsTextComesBack) {
    ScriptedLines input{" open sesame ", "2"};
    std::ostringstream out;
    const auto result = TerminalPrompt(input, out, 80).ask(kPassphrase);

    EXPECT_EQ(result.answer.buttonIndex, 1u);
    EXPECT_EQ(result.answer.fieldText, " open sesame ") << "a passphrase is taken as typed";
    EXPECT_EQ(input.secretReads, (std::vector<bool>{true, false}));
    EXPECT_NE(out.str().find("Passphrase: "), std::string::npos);
}

TEST(TerminalPromptTest, AnEndedOrInterruptedInputAtEitherReadLeavesTheAlertUnanswered) {
    std::ostringstream out;
    for (const auto stop : {InputLine::Kind::EndOfInput, InputLine::Kind::Interrupted}) {
        const Kind expected = stop == InputLine::Kind::EndOfInput ? Kind::EndOfInput : Kind::Interrupted;
        ScriptedLines atField{"2"};
        atField.lines.push_front({stop, {}});
        EXPECT_EQ(TerminalPrompt(atField, out, 80).ask(kPassphrase).kind, expected);
        EXPECT_EQ(atField.secretReads.size(), 1u) << "no button asked for after that";

        ScriptedLines atButton{"secret", "7"};
        atButton.lines.push_back({stop, {}});
        EXPECT_EQ(TerminalPrompt(atButton, out, 80).ask(kPassphrase).kind, expected);
    }
}

TEST(TerminalPromptTest, ASingleButtonAnswersAtOnce) {
    ScriptedLines input{"2"};
    std::ostringstream out;
    const auto result = TerminalPrompt(input, out, 80).ask({.title = "Backup done", .message = "", .buttons = {"OK"}});

    EXPECT_EQ(result.kind, Kind::Answered);
    EXPECT_EQ(result.answer.buttonIndex, 0u);
    EXPECT_TRUE(input.secretReads.empty());
    EXPECT_EQ(out.str(), "Backup done\n");
}

TEST(TerminalPromptTest, ChoosingFromAListGivesTheIndexAndZeroGoesBack) {
    const std::vector<std::string> options{"Applications", "Packages", "Data"};
    std::ostringstream out;
    ScriptedLines picks{"4", "3"};
    EXPECT_EQ(TerminalPrompt(picks, out, 80).choose("Restore", options), 2u);
    EXPECT_EQ(out.str(),
              "Restore\n  1) Applications\n  2) Packages\n  3) Data\n  0) Back\n> "
              "Type a number from 0 to 3.\n> ");

    ScriptedLines back{"0"}, ended{};
    EXPECT_EQ(TerminalPrompt(back, out, 80).choose("Restore", options), std::nullopt);
    EXPECT_EQ(TerminalPrompt(ended, out, 80).choose("Restore", options), std::nullopt);
}

// The prompt test shows plain wrapping, the progress bar test the columns of multi-byte text.
TEST(TextWrapTest, NewlinesAndIndentationStayAndLongWordsStayWhole) {
    EXPECT_EQ(wrapped("Missing:\n  com.example.tweak\n\nGo on?", 10), "Missing:\n  com.example.tweak\n\nGo on?");
    EXPECT_EQ(wrapped("  see /var/mobile/Library/Preferences now", 12), "  see\n/var/mobile/Library/Preferences\nnow");
    EXPECT_EQ(wrapped("Stowhaven™ is ready", 16), "Stowhaven™ is\nready") << "™ is one column";
}

}  // namespace
}  // namespace stowhaven
