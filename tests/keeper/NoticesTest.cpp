#include "keeper/Notices.h"

#include <gtest/gtest.h>
#include <string>

using namespace drench::keeper;

TEST(Notices, TellWhatTheServerWrote) {
    EXPECT_EQ(noticeIn("Ann joined\n"), Notice::joined);
    EXPECT_EQ(noticeIn("Ann disconnected\n"), Notice::left);
    EXPECT_EQ(noticeIn("Ann soaked Bo!\n"), Notice::soaked);
    EXPECT_EQ(noticeIn("Player denied --- Game is full.\n"), Notice::refused);
    for (const char* line :
         {"sizeof(UpdateMessage) 244\n", "htons(port) = 34835\n", "usage: port\n",
          "Server is listening on port 5000\n", "Error binding socket\n",
          "Error reading file at: /x/Resources/mapdata", "Who is there!\n", "", "\n", "Ann joined"})
        EXPECT_EQ(noticeIn(line), Notice::other) << line;
}

TEST(Notices, NamesWithoutACharacterCount) {
    EXPECT_EQ(noticeIn(" joined\n"), Notice::joined);
    EXPECT_EQ(noticeIn(" disconnected\n"), Notice::left);
    EXPECT_EQ(noticeIn(" soaked !\n"), Notice::soaked);
}

TEST(Notices, NamesWithEndsOfLinesAreStillOneNotice) {
    EXPECT_EQ(noticeIn("A joined\nB joined\n"), Notice::joined);
    EXPECT_EQ(noticeIn("A joined\nB disconnected\n"), Notice::left);
    EXPECT_EQ(noticeIn("A joined\nB soaked A joined\nB!\n"), Notice::soaked);
    EXPECT_EQ(noticeIn("A soaked B!\n joined\n"), Notice::joined);
    EXPECT_EQ(noticeIn("\n soaked !\n joined\n"), Notice::joined);
    EXPECT_EQ(noticeIn("\n\n\n\n\n joined\n"), Notice::joined);
}

TEST(Notices, ArePrintedInOneLineWithoutControlCharacters) {
    EXPECT_EQ(printable("Ann joined\n"), "Ann joined");
    EXPECT_EQ(printable("A joined\nB joined\n"), "A joined\\x0aB joined");
    EXPECT_EQ(printable("\x1b[2J joined\n"), "\\x1b[2J joined");
    EXPECT_EQ(printable("a\\x0ab joined\n"), "a\\x5cx0ab joined");
    EXPECT_EQ(printable("\x7f\t\r\n\n"), "\\x7f\\x09\\x0d\\x0a");
    EXPECT_EQ(printable("J\xc3\xbcrg joined"), "J\xc3\xbcrg joined");
    EXPECT_EQ(printable(""), "");
}
