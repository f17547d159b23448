#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace drench::arena {

/// The lines of a plan, one after the other, and errors that name a place in them.
struct PlanLines {
    struct Word {
        std::string_view text;
        std::size_t column;
    };

    /// The name that errors begin with, and the unread rest of the text. The file name and the text
    /// must outlive this.
    const std::string& file;
    std::string_view rest;

    /// The current line, from 1, without its end, and its words.
    int number = 0;
    std::string_view line;
    std::vector<Word> words;

    /// Skips a byte order mark.
    PlanLines(const std::string& text, const std::string& fileName);

    /// Goes to the next line of whatever kind. At the end it stays at the last one.
    bool nextLine();

    /// Goes to the next line that is neither empty nor a comment.
    bool next();

    /// Goes to the next line as next() does. Fails at the end of the text, naming `allowed`.
    void expect(const std::string& allowed);

    bool hasWord(std::size_t index) const { return index < words.size(); }

    /// Throws InputError "file:line:column: what".
    [[noreturn]] void fail(std::size_t column, const std::string& what) const;
    [[noreturn]] void failAtEnd(const std::string& what) const;

    /// Fails at the word of this index, or behind the line if it has fewer words.
    [[noreturn]] void failAtWord(std::size_t index, const std::string& what) const;
};

} // namespace drench::arena
