#include "FileLoader.h"

#include <cstdlib>
#include <iostream>

void openFile(std::string path, std::ifstream& stream) {
    stream.open(path, std::ios::in);
    if (stream.fail()) {
        std::cout << "Error reading file at: " << path;
        exit(0);
    }
}

std::string fileStringContents(std::string path) {
    std::ifstream stream;
    openFile(path, stream);
    std::string contents;
    std::string line;
    while (getline(stream, line, '\n'))
        contents += line;
    return contents;
}

std::string fileOneLine(std::string path, int n) {
    std::ifstream stream;
    openFile(path, stream);
    std::string line;
    for (int skipped = 0; skipped < n && stream; ++skipped)
        getline(stream, line, '\n');
    line.clear();
    getline(stream, line, '\n');
    return line;
}

std::vector<std::string> fileVectorStringContents(std::string path) {
    std::ifstream stream;
    openFile(path, stream);
    std::vector<std::string> lines;
    std::string line;
    while (getline(stream, line, '\n'))
        lines.push_back(line);
    return lines;
}
