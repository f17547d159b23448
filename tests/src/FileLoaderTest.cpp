#include "src/FileLoader.h"
#include "tests/support/CapturedOutput.h"
#include "tests/support/TemporaryFolder.h"

#include <climits>
#include <gtest/gtest.h>
#include <iostream>

using testing::ExitedWithCode;

namespace {

using Lines = std::vector<std::string>;

/// A file of one test with these bytes.
struct TextFile {
    TemporaryFolder folder;
    std::string path;

    explicit TextFile(const std::string& text) : path(folder.write("text", text)) {}
};

const std::string missing = "/no-such-folder/mapdata";
const std::string refusal = "^Error reading file at: /no-such-folder/mapdata$";

} // namespace

TEST(FileLoader, EmptyFileHasNoTextAndNoLines) {
    const TextFile file("");
    EXPECT_EQ(fileStringContents(file.path), "");
    EXPECT_EQ(fileOneLine(file.path, 0), "");
    EXPECT_EQ(fileVectorStringContents(file.path), Lines());
}

TEST(FileLoader, OpenedStreamReadsFromTheStart) {
    const TextFile file("first\nsecond\n");
    std::ifstream stream;
    openFile(file.path, stream);
    EXPECT_TRUE(stream.is_open());
    std::string line;
    std::getline(stream, line);
    EXPECT_EQ(line, "first");
}

TEST(FileText, LinesAreJoinedWithNothingInBetween) {
    EXPECT_EQ(fileStringContents(TextFile("a\n\nb\n").path), "ab");
    EXPECT_EQ(fileStringContents(TextFile("1 2\n3 4\n").path), "1 23 4");
    EXPECT_EQ(fileStringContents(TextFile("1 2 \n3 4\n").path), "1 2 3 4");
    EXPECT_EQ(fileStringContents(TextFile("\n\n\n").path), "");
}

TEST(FileText, LastLineWithoutALineEndIsKept) {
    EXPECT_EQ(fileStringContents(TextFile("1 2\n3 4").path), "1 23 4");
    EXPECT_EQ(fileStringContents(TextFile("alone").path), "alone");
}

TEST(FileText, CarriageReturnsAndZeroBytesAreOrdinaryCharacters) {
    const std::string text("1\r\n\0a\r\n", 7);
    EXPECT_EQ(fileStringContents(TextFile(text).path), std::string("1\r\0a\r", 5));
}

TEST(FileText, LongLinesAreReadWhole) {
    const std::string line(1000000, 'x');
    EXPECT_EQ(fileStringContents(TextFile(line + "\n" + line).path), line + line);
}

TEST(FileLine, IndexCountsFromZero) {
    const TextFile file("x\ny\n");
    EXPECT_EQ(fileOneLine(file.path, 0), "x");
    EXPECT_EQ(fileOneLine(file.path, 1), "y");
}

TEST(FileLine, IndexPastTheEndGivesNothing) {
    const TextFile file("x\ny\n");
    EXPECT_EQ(fileOneLine(file.path, 2), "");
    EXPECT_EQ(fileOneLine(file.path, 1000), "");
}

TEST(FileLine, IndexPastALastLineWithoutALineEndDoesNotGiveThatLineAgain) {
    const TextFile file("x\ny");
    EXPECT_EQ(fileOneLine(file.path, 1), "y");
    EXPECT_EQ(fileOneLine(file.path, 2), "");
    EXPECT_EQ(fileOneLine(file.path, 3), "");
}

TEST(FileLine, NegativeIndexGivesTheFirstLine) {
    const TextFile file("x\ny\n");
    EXPECT_EQ(fileOneLine(file.path, -1), "x");
    EXPECT_EQ(fileOneLine(file.path, -5), "x");
    EXPECT_EQ(fileOneLine(file.path, INT_MIN), "x");
}

TEST(FileLine, EmptyLinesAndCarriageReturnsCountAsTheyStand) {
    const TextFile file("a\r\n\nb");
    EXPECT_EQ(fileOneLine(file.path, 0), "a\r");
    EXPECT_EQ(fileOneLine(file.path, 1), "");
    EXPECT_EQ(fileOneLine(file.path, 2), "b");
}

TEST(FileLines, EmptyLinesAreKept) {
    EXPECT_EQ(fileVectorStringContents(TextFile("a\n\nb\n").path), (Lines{"a", "", "b"}));
    EXPECT_EQ(fileVectorStringContents(TextFile("\n").path), Lines{""});
    EXPECT_EQ(fileVectorStringContents(TextFile("a\n\n").path), (Lines{"a", ""}));
}

TEST(FileLines, LastLineWithoutALineEndIsKeptAndALastLineEndAddsNothing) {
    EXPECT_EQ(fileVectorStringContents(TextFile("a\nb").path), (Lines{"a", "b"}));
    EXPECT_EQ(fileVectorStringContents(TextFile("a\nb\n").path), (Lines{"a", "b"}));
    EXPECT_EQ(fileVectorStringContents(TextFile("a").path), Lines{"a"});
}

TEST(FileLines, CarriageReturnsStayAtTheEndsOfTheirLines) {
    EXPECT_EQ(fileVectorStringContents(TextFile("a\r\nb\r\n").path), (Lines{"a\r", "b\r"}));
}

// A folder opens like a file, but cannot be read.
TEST(FileLoader, ReadErrorEndsTheReadingAndNotTheProcess) {
    const TemporaryFolder folder;
    EXPECT_EQ(fileStringContents(folder.path), "");
    EXPECT_EQ(fileOneLine(folder.path, 3), "");
    EXPECT_EQ(fileVectorStringContents(folder.path), Lines());
}

TEST(FileLoaderDeathTest, MissingFileEndsTheProcessWithStatusZeroInEveryReader) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT((showOutputOnStandardError(), fileStringContents(missing)), ExitedWithCode(0),
                refusal);
    EXPECT_EXIT((showOutputOnStandardError(), fileOneLine(missing, 0)), ExitedWithCode(0), refusal);
    EXPECT_EXIT((showOutputOnStandardError(), fileVectorStringContents(missing)), ExitedWithCode(0),
                refusal);
}

TEST(FileLoaderDeathTest, StreamThatIsOpenAlreadyIsRefusedUnderTheNewPath) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            showOutputOnStandardError();
            std::ifstream stream("/dev/null");
            openFile("/dev/zero", stream);
        },
        ExitedWithCode(0), "^Error reading file at: /dev/zero$");
}
