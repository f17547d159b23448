#pragma once

#include "arena/picture/Png.h"
#include "common/Files.h"
#include "tests/support/PictureComparison.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

// Stored pictures. DRENCH_RENEW_PICTURES=1 writes them anew: look at them before you commit them.

/// The picture is the stored one of this name, as people see it.
inline void expectStored(const arena::Image& actual, const std::string& name) {
    const std::string path = std::string(DRENCH_TEST_PICTURES) + "/" + name;
    if (std::getenv("DRENCH_RENEW_PICTURES")) {
        replaceFile(path, arena::encodePng(actual));
        GTEST_SKIP() << "renewed " << path;
    }
    const PictureDifference difference =
        pictureDifference(arena::decodePng(readFile(path)), actual);
    if (difference.negligible())
        return;
    const std::string shown =
        (std::filesystem::temp_directory_path() / ("drench-" + name)).string();
    replaceFile(shown, arena::encodePng(actual));
    ADD_FAILURE() << shown << " is not as " << path << ": "
                  << (difference.sameSize ? "" : "of another size, ") << "mean difference "
                  << difference.mean << " levels, clear in " << 100.0 * difference.clearShare
                  << " %";
}
