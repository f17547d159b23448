#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

/// A folder of a test's own, removed with its contents.
struct TemporaryFolder {
    const std::string path;

    TemporaryFolder() : path(make()) {}
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Makes a file of exactly these bytes and returns its path.
    std::string write(const std::string& name, const std::string& text) const {
        const std::string file = path + "/" + name;
        std::ofstream stream(file, std::ios::binary);
        stream << text;
        stream.close();
        if (!stream)
            throw std::runtime_error("cannot write " + file);
        return file;
    }

  private:
    static std::string make() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "drench-test-XXXXXX").string();
        if (!mkdtemp(pattern.data()))
            throw std::runtime_error("no temporary folder at " + pattern);
        return pattern;
    }
};
