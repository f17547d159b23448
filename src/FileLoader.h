#pragma once

#include <fstream>
#include <string>
#include <vector>

// Whole text files. A file that cannot be opened ends the process. A read error in the middle
// keeps what was read so far. Only "\n" ends a line; a carriage return is an ordinary character.

/// Opens `stream` for reading, or writes "Error reading file at: " and the path to standard output
/// and exits with status 0.
void openFile(std::string path, std::ifstream& stream);

/// The file's lines joined with nothing in between: "1 2\n3 4" gives "1 23 4".
std::string fileStringContents(std::string path);

/// The line with 0-based index n, the first for any n below 1, "" past the end.
std::string fileOneLine(std::string path, int n);

/// One string a line, a last line without a line end included.
std::vector<std::string> fileVectorStringContents(std::string path);
