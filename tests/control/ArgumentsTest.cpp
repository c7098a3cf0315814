#include "BLE_kovra/control/Arguments.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace kovra::control {
namespace {

const std::string version = "1.2.3";

std::size_t lines(const std::string& text) { return static_cast<std::size_t>(std::ranges::count(text, '\n')); }

TEST(ArgumentsTest, OfTheApplicationStartItIfThereAreNone) {
    EXPECT_FALSE(replyOfApplication({}, version).has_value());
}

TEST(ArgumentsTest, OfTheApplicationAskForItsVersionAndItsHelp) {
    const auto number = replyOfApplication({"--version"}, version);
    ASSERT_TRUE(number.has_value());
    EXPECT_EQ(number->output, "ble-kovra 1.2.3\n");
    EXPECT_EQ(number->error + std::to_string(number->exitCode), "0");
    const auto help = replyOfApplication({"--help"}, version);
    ASSERT_TRUE(help.has_value());
    EXPECT_TRUE(help->output.starts_with("usage: ble-kovra [--help | --version]\n"));
    EXPECT_EQ(help->error + std::to_string(help->exitCode), "0");
}

TEST(ArgumentsTest, ThatTheApplicationDoesNotKnowEndItWithOneLine) {
    for (const Arguments& arguments :
         {Arguments{"--quit"}, Arguments{"help"}, Arguments{""}, Arguments{"-h"}, Arguments{"--version", "--json"},
          Arguments{"--help", "--help"}, Arguments{"a\nb\x1B[2J"}}) {
        const auto reply = replyOfApplication(arguments, version);
        ASSERT_TRUE(reply.has_value());
        EXPECT_EQ(reply->exitCode, 2);
        EXPECT_EQ(reply->output, "");
        EXPECT_EQ(lines(reply->error), 1U) << reply->error;
        EXPECT_EQ(reply->error.find('\x1B'), std::string::npos);
    }
    EXPECT_EQ(replyOfApplication({"--version", "now"}, version)->error,
              "ble-kovra: unknown argument: now; see ble-kovra --help\n");
}

TEST(ArgumentsTest, ThatAreUnknownAreNamedWithoutControlCharacters) {
    for (const std::string control : {"\n", "\x1B", "\x7F", "\xC2\x9B"}) {
        const std::string argument = "a" + control + "[2J";
        EXPECT_EQ(replyOfApplication({argument}, version)->error,
                  "ble-kovra: unknown argument: a?[2J; see ble-kovra --help\n");
        EXPECT_EQ(parse({"status", argument}, version).reply.error,
                  "ble-kovractl: unknown argument: a?[2J; see ble-kovractl --help\n");
    }
}

TEST(ArgumentsTest, ThatAreEmptyAreNotMissing) {
    EXPECT_EQ(replyOfApplication({""}, version)->error, "ble-kovra: an argument is empty; see ble-kovra --help\n");
    EXPECT_EQ(parse({"doctor", ""}, version).reply.error,
              "ble-kovractl: an argument is empty; see ble-kovractl --help\n");
}

TEST(ArgumentsTest, OfTheControlNameOneCommand) {
    const Parsed status = parse({"status"}, version);
    ASSERT_TRUE(status.command.has_value());
    EXPECT_EQ(status.command->kind, Command::Kind::status);
    EXPECT_FALSE(status.command->isJson);
    const Parsed json = parse({"status", "--json"}, version);
    ASSERT_TRUE(json.command.has_value());
    EXPECT_TRUE(json.command->isJson);
    const Parsed doctor = parse({"doctor"}, version);
    ASSERT_TRUE(doctor.command.has_value());
    EXPECT_EQ(doctor.command->kind, Command::Kind::doctor);
    for (const std::string action : {"toggle", "on", "off", "settings", "hotkey", "quit"}) {
        const Parsed parsed = parse({action}, version);
        ASSERT_TRUE(parsed.command.has_value()) << action;
        EXPECT_EQ(parsed.command->kind, Command::Kind::action);
        EXPECT_EQ(parsed.command->action, action);
    }
}

TEST(ArgumentsTest, OfTheControlAskForItsVersionAndItsHelp) {
    EXPECT_EQ(parse({"--version"}, version).reply.output, "ble-kovractl 1.2.3\n");
    const Parsed help = parse({"--help"}, version);
    EXPECT_FALSE(help.command.has_value());
    EXPECT_EQ(help.reply.exitCode, 0);
    for (const char* command : {"status [--json]", "doctor", "toggle", "on", "off", "settings", "hotkey", "quit"}) {
        EXPECT_NE(help.reply.output.find(command), std::string::npos) << command;
    }
}

TEST(ArgumentsTest, ThatTheControlDoesNotKnowEndItWithOneLine) {
    for (const Arguments& arguments : {Arguments{}, Arguments{"mute"}, Arguments{"--json"}, Arguments{"status", "now"},
                                       Arguments{"status", "--json", "--json"}, Arguments{"doctor", "--json"},
                                       Arguments{"toggle", "twice"}, Arguments{"Toggle"}, Arguments{"--help", "me"}}) {
        const Parsed parsed = parse(arguments, version);
        EXPECT_FALSE(parsed.command.has_value());
        EXPECT_EQ(parsed.reply.exitCode, 2);
        EXPECT_EQ(parsed.reply.output, "");
        EXPECT_EQ(lines(parsed.reply.error), 1U) << parsed.reply.error;
    }
    EXPECT_EQ(parse({"status", "now"}, version).reply.error,
              "ble-kovractl: unknown argument: now; see ble-kovractl --help\n");
    EXPECT_EQ(parse({}, version).reply.error, "ble-kovractl: an argument is missing; see ble-kovractl --help\n");
}

}  // namespace
}  // namespace kovra::control
