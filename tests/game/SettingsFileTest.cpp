#include "game/SettingsFile.h"

#include "common/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <locale>

using namespace drench;
using namespace drench::game;

namespace {

constexpr Input keyQ{Input::Device::keyboard, 20};
constexpr Input keyW{Input::Device::keyboard, 26};
constexpr Input arrowUp{Input::Device::keyboard, 82};

class SettingsInAFile : public testing::Test {
  protected:
    TemporaryFolder folder;
    std::string file = folder.path + "/settings.toml";
    std::vector<std::string> problems;

    Settings read(const std::string& text) {
        folder.write("settings.toml", text);
        return read();
    }

    Settings read() {
        ReadSettings result = readSettings(file);
        problems = result.problems;
        return result.settings;
    }

    bool exists(const std::string& name) const {
        return std::filesystem::exists(folder.path + "/" + name);
    }
};

struct DecimalComma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
};

/// No value as at first.
Settings unusual() {
    Settings settings;
    settings.name = "Ann \"A\" ä";
    settings.rooms = {"localhost:5000", "192.0.2.1:5001"};
    settings.sensitivity = 0.123456789;
    settings.stickSensitivity = 2.0;
    settings.invertX = settings.invertY = true;
    settings.toggleFire = true;
    settings.fieldOfView = 110.0;
    settings.fullScreen = true;
    settings.picture = Picture::full;
    settings.frameLimit = 0;
    settings.vsync = false;
    settings.renderScale = 0.5;
    settings.interfaceScale = 1.5;
    settings.colourBlind = settings.lessMotion = settings.captions = true;
    settings.showWhereShotsMeet = true;
    settings.masterVolume = 0.0;
    settings.effectsVolume = 0.25;
    settings.bindings.bind(Action::jump, keyQ);
    settings.bindings.unbindAll(Action::record);
    return settings;
}

} // namespace

TEST_F(SettingsInAFile, AreReadAsWritten) {
    writeSettings(file, unusual());
    EXPECT_EQ(read(), unusual());
    EXPECT_TRUE(problems.empty());
    EXPECT_FALSE(unusual() == Settings());
}

TEST_F(SettingsInAFile, AreTheUsualOnesWithoutAFile) {
    EXPECT_EQ(read(), Settings());
    EXPECT_TRUE(problems.empty());
    EXPECT_FALSE(exists("settings.toml"));
    EXPECT_EQ(read(""), Settings()) << "an empty file";
    EXPECT_TRUE(problems.empty());
}

TEST_F(SettingsInAFile, MakeTheirFolder) {
    file = folder.path + "/config/drench/settings.toml";
    writeSettings(file, unusual());
    EXPECT_EQ(read(), unusual());
}

TEST_F(SettingsInAFile, DoNotChangeWithTheLocale) {
    const std::locale before = std::locale::global(std::locale(std::locale(), new DecimalComma));
    writeSettings(file, unusual());
    EXPECT_EQ(read(), unusual());
    std::locale::global(before);
}

TEST_F(SettingsInAFile, KeepWhatTheyDoNotKnow) {
    folder.write("settings.toml", "later = 5\n[mouse]\nsensitivity = 2\nwheel = [1, 2]\n"
                                  "[keys]\ndance = ['KeyX']\n[new]\nword = 'kept'\n");
    Settings settings = read();
    EXPECT_TRUE(problems.empty());
    EXPECT_EQ(settings.sensitivity, 2.0);
    settings.sensitivity = 3.0;
    writeSettings(file, settings);
    const std::string text = readFile(file);
    for (const char* part : {"later = 5", "wheel = [ 1, 2 ]", "dance = [ 'KeyX' ]", "word = 'kept'",
                             "sensitivity = 3.0"})
        EXPECT_NE(text.find(part), std::string::npos) << part << " in\n" << text;
    EXPECT_EQ(read(), settings);
}

TEST_F(SettingsInAFile, AreClampedWhenReadAndWhenWritten) {
    Settings settings = read("[mouse]\nsensitivity = 1e9\n[picture]\nframe-limit = -1\n");
    EXPECT_TRUE(problems.empty());
    EXPECT_EQ(settings.sensitivity, 10.0);
    EXPECT_EQ(settings.frameLimit, 0);
    settings.fieldOfView = 1000.0;
    settings.name = "\xFF";
    writeSettings(file, settings);
    EXPECT_EQ(read().fieldOfView, 130.0);
    EXPECT_TRUE(problems.empty()) << "the name is text";
}

TEST_F(SettingsInAFile, ValueOfAnotherKindIsToldAndBecomesTheUsualOne) {
    const Settings settings = read("[player]\nname = 5\nrooms = ['a:1', 7]\n[mouse]\n"
                                   "sensitivity = nan\ninvert-x = 'yes'\n[picture]\n"
                                   "frame-limit = 1.5\nvsync = false\nquality = 'best'\n");
    EXPECT_EQ(problems,
              (std::vector<std::string>{
                  file + ":5: sensitivity is no number; the usual value is used",
                  file + ":6: invert-x is neither true nor false; the usual value is used",
                  file + ":10: quality cannot be \"best\"; the usual value is used",
                  file + ":8: frame-limit is no whole number; the usual value is used",
                  file + ":2: name is no text; the usual value is used",
                  file + ":3: rooms has something else than texts in its list"}));
    Settings expected;
    expected.rooms = {"a:1"};
    expected.vsync = false;
    EXPECT_EQ(settings, expected);
    EXPECT_FALSE(exists("settings.toml.damaged"));
}

TEST_F(SettingsInAFile, TableOfAnotherKindCountsAsMissing) {
    EXPECT_EQ(read("mouse = 5\nkeys = []\n"), Settings());
    writeSettings(file, unusual());
    EXPECT_EQ(read(), unusual());
}

TEST_F(SettingsInAFile, DamagedFileIsToldAndKeptAside) {
    const std::string damaged = "[mouse]\nsensitivity = 2\ninvert-x = maybe\n";
    EXPECT_EQ(read(damaged), Settings());
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_EQ(problems[0].rfind(file + ":3: ", 0), 0u) << problems[0];
    EXPECT_NE(problems[0].find("kept as " + file + ".damaged"), std::string::npos) << problems[0];
    EXPECT_EQ(readFile(file + ".damaged"), damaged);
    EXPECT_FALSE(exists("settings.toml"));

    EXPECT_EQ(read("other damage"), Settings());
    EXPECT_EQ(readFile(file + ".damaged"), damaged) << "the first one stays";
    EXPECT_EQ(readFile(file + ".damaged-2"), "other damage");
}

TEST_F(SettingsInAFile, NoBytesMakeTheReadingFail) {
    std::string nested = "a = ";
    nested.append(100000, '[');
    for (const std::string& text :
         {nested, std::string("\0\0", 2), std::string("\xFF\xFE"), std::string("a = \"\x1B\"")}) {
        EXPECT_EQ(read(text), Settings());
        EXPECT_EQ(problems.size(), 1u);
    }
}

TEST_F(SettingsInAFile, WritingOverDamageKeepsItAsideToo) {
    folder.write("settings.toml", "damage");
    writeSettings(file, unusual());
    EXPECT_EQ(read(), unusual());
    EXPECT_EQ(readFile(file + ".damaged"), "damage");
}

TEST_F(SettingsInAFile, UnreadableFileIsToldAndNotOverwritten) {
    std::filesystem::create_directory(file);
    EXPECT_EQ(read(), Settings());
    EXPECT_EQ(problems, std::vector<std::string>{file + ": cannot be read (it is a folder)"});
    EXPECT_THROW(writeSettings(file, unusual()), InputError);
    EXPECT_TRUE(std::filesystem::is_directory(file));
}

TEST_F(SettingsInAFile, WhatCannotBeWrittenIsTold) {
    EXPECT_THROW(writeSettings("/proc/drench/settings.toml", Settings()), InputError);
}

TEST_F(SettingsInAFile, InputServesTheActionThatTheFileGivesIt) {
    const Settings settings = read("[keys]\njump = ['KeyW', 'KeyQ']\nchat = []\n");
    EXPECT_TRUE(problems.empty());
    EXPECT_EQ(settings.bindings.actionOf(keyW), Action::jump);
    EXPECT_EQ(settings.bindings.actionOf(keyQ), Action::jump);
    EXPECT_EQ(settings.bindings.actionOf(arrowUp), Action::forward) << "usual, and free";
    EXPECT_TRUE(settings.bindings.inputsOf(Action::chat).empty());
}

TEST_F(SettingsInAFile, InputWithoutAMeaningIsTold) {
    const Settings settings = read("[keys]\n\njump = ['Foot', 'KeyQ', 5]\nfire = 'KeyE'\n");
    EXPECT_EQ(problems,
              (std::vector<std::string>{file + ":3: jump has no key or button \"Foot\"",
                                        file + ":3: jump has something else than texts in its list",
                                        file + ":4: fire is no list; the usual one is used"}));
    EXPECT_EQ(settings.bindings.inputsOf(Action::jump).size(), 1u);
    EXPECT_EQ(settings.bindings.actionOf({Input::Device::mouse, 1}), Action::fire);
}

TEST(SettingsFolder, IsTheUsersForSettings) {
    setenv("XDG_CONFIG_HOME", "/etc/ann", 1);
    EXPECT_EQ(settingsFile(), "/etc/ann/drench/settings.toml");
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("HOME");
    EXPECT_EQ(settingsFile(), "");
}
