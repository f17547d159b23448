#include "src/FilePath.h"

#include <filesystem>
#include <gtest/gtest.h>

TEST(FilePath, AppPathIsTheFolderOfTheRunningExecutable) {
    const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_EQ(getAppPath(), executable.parent_path());
    EXPECT_EQ(getAppPath().front(), '/');
    EXPECT_NE(getAppPath().back(), '/');
}

TEST(FilePath, AppPathDoesNotDependOnTheWorkingDirectory) {
    const std::string before = getAppPath();
    const std::filesystem::path workingDirectory = std::filesystem::current_path();
    std::filesystem::current_path("/");
    const std::string after = getAppPath();
    std::filesystem::current_path(workingDirectory);
    EXPECT_EQ(after, before);
}

TEST(FilePath, ResourcesLieInTheirFolderBesideTheExecutable) {
    EXPECT_EQ(getResourcePath("mapdata"), getAppPath() + "/Resources/mapdata");
}

TEST(FilePath, ResourceNamesAreNeitherCheckedNorNormalized) {
    EXPECT_EQ(getResourcePath("../no//such file/"), getAppPath() + "/Resources/../no//such file/");
    EXPECT_EQ(getResourcePath(""), getAppPath() + "/Resources/");
}

TEST(FilePath, OldResourcePathIsAlwaysEmpty) {
    EXPECT_EQ(resourcePath("mapdata"), "");
    EXPECT_EQ(resourcePath(""), "");
}
