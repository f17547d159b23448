#pragma once

#include <map>
#include <string>
#include <vector>

// docs/protocol.md as a program reads it. Whatever the page says that cannot be read throws
// std::runtime_error with the line.

/// A row of a record's table. `size` is 0 where the field reaches to the end of the datagram.
struct Field {
    size_t offset;
    size_t size;
    std::string type;
    std::string name;
    std::string meaning;
};

/// A record's heading and table. `bytes` is the largest size.
struct Record {
    std::string name;
    std::string direction;
    char code;
    size_t bytes;
    std::vector<Field> fields;
};

/// One datagram of the page's dump; `sender` is "client" or "server".
struct DumpedDatagram {
    std::string sender;
    std::string title;
    std::string bytes;
};

struct ProtocolDocument {
    std::vector<Record> records;
    std::vector<DumpedDatagram> dump;

    /// Reads the page.
    explicit ProtocolDocument(const std::string& path);

    /// The record of this name, sent in this direction ("client to server", "server to client").
    const Record& record(const std::string& direction, const std::string& name) const;

    /// The record that a datagram from the server is, by its code and size.
    const Record& recordOf(const std::string& datagram) const;

    /// Field values by name, those of a player as "player 1 points". Numbers stay numbers; texts
    /// and chars are bytes. Fails the test where a `zero` is not.
    struct Values {
        std::map<std::string, double> numbers;
        std::map<std::string, std::string> texts;
    };
    Values decode(const Record& record, const std::string& datagram) const;

    /// The datagram with these values; fields not named are zero.
    std::string encode(const Record& record, const Values& values) const;
};
