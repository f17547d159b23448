#include "tests/process/ProtocolDocument.h"

#include <cstdint>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <optional>
#include <sstream>
#include <stdexcept>

namespace {

std::string trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? ""
                                      : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);)
        parts.push_back(trimmed(part));
    return parts;
}

std::string unquoted(const std::string& cell) {
    return cell.size() > 2 && cell.front() == '`' ? cell.substr(1, 1) : "";
}

/// The datagram that the lines of a canonical hex dump show, from the stream's position on.
std::string readHexDump(std::istream& in) {
    std::string bytes;
    bool repeats = false;
    for (std::string line; std::getline(in, line);) {
        if (line == "*") {
            repeats = true;
            continue;
        }
        const size_t offset = std::stoul(line.substr(0, 8), nullptr, 16);
        while (repeats && bytes.size() < offset)
            bytes += bytes.substr(bytes.size() - 16);
        repeats = false;
        if (bytes.size() != offset)
            throw std::runtime_error("the dump skips bytes at: " + line);
        if (line.size() == 8)
            return bytes;
        std::istringstream pairs(line.substr(8, line.find('|') - 8));
        for (std::string pair; pairs >> pair;)
            bytes += static_cast<char>(std::stoul(pair, nullptr, 16));
    }
    throw std::runtime_error("the dump ends without a length");
}

/// The record that a heading like "### `k` key, client to server, 4 bytes" or "### A player, 60
/// bytes" opens, if it is one.
std::optional<Record> recordHeadedBy(const std::string& line) {
    const std::vector<std::string> parts = split(line.substr(line.find(' ') + 1), ',');
    if (!line.starts_with("### ") || parts.size() < 2 ||
        parts.back().find(" byte") == std::string::npos)
        return std::nullopt;
    Record record = {parts[0], parts.size() == 3 ? parts[1] : "", '\0', 0, {}};
    if (record.name.front() == '`') {
        record.code = record.name[1];
        record.name.erase(0, 4);
    }
    const std::string size = parts.back().substr(0, parts.back().rfind(' '));
    record.bytes = std::stoul(size.substr(size.rfind(' ') + 1));
    return record;
}

/// The field that a row of five cells describes; the rows at a table's head describe none.
std::optional<Field> fieldIn(const std::string& line) {
    const std::vector<std::string> cells = split(line, '|');
    if (cells.size() != 6 || cells[1].find_first_not_of("0123456789") != std::string::npos)
        return std::nullopt;
    return Field{std::stoul(cells[1]), cells[2] == "to the end" ? 0 : std::stoul(cells[2]),
                 cells[3], cells[4], cells[5]};
}

template<typename Number>
double numberAt(const std::string& bytes) {
    Number number;
    if (bytes.size() != sizeof number)
        throw std::runtime_error("a number of the wrong size");
    std::memcpy(&number, bytes.data(), sizeof number);
    return static_cast<double>(number);
}

template<typename Number>
std::string bytesOf(double value) {
    const Number number = static_cast<Number>(value);
    return std::string(reinterpret_cast<const char*>(&number), sizeof number);
}

} // namespace

ProtocolDocument::ProtocolDocument(const std::string& path) {
    std::ifstream in(path);
    if (!in)
        throw std::runtime_error("cannot read " + path);
    bool inRecord = false;
    bool inDump = false;
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with("#")) {
            const std::optional<Record> record = recordHeadedBy(line);
            inRecord = record.has_value();
            if (inRecord)
                records.push_back(*record);
        } else if (inRecord && line.starts_with("|")) {
            if (const std::optional<Field> field = fieldIn(line))
                records.back().fields.push_back(*field);
        } else if (line == "```hexdump") {
            inDump = true;
        } else if (line == "```") {
            inDump = false;
        } else if (inDump) {
            const size_t colon = line.find(": ");
            if (!line.starts_with("client: ") && !line.starts_with("server: "))
                throw std::runtime_error("neither title nor bytes in the dump: " + line);
            dump.push_back({line.substr(0, colon), line.substr(colon + 2), readHexDump(in)});
        }
    }
}

const Record& ProtocolDocument::record(const std::string& direction,
                                       const std::string& name) const {
    for (const Record& candidate : records) {
        if (candidate.direction == direction && candidate.name == name)
            return candidate;
    }
    throw std::runtime_error("no record " + name + ", " + direction);
}

const Record& ProtocolDocument::recordOf(const std::string& datagram) const {
    for (const Record& candidate : records) {
        if (candidate.direction == "server to client" && candidate.bytes == datagram.size() &&
            candidate.code == datagram[0])
            return candidate;
    }
    throw std::runtime_error("no record with code " + datagram.substr(0, 1) + " and " +
                             std::to_string(datagram.size()) + " bytes");
}

ProtocolDocument::Values ProtocolDocument::decode(const Record& record,
                                                  const std::string& datagram) const {
    Values values;
    for (const Field& field : record.fields) {
        const std::string bytes =
            datagram.substr(field.offset, field.size ? field.size : std::string::npos);
        if (field.type == "char") {
            values.texts[field.name] = bytes;
        } else if (field.type == "text") {
            values.texts[field.name] = bytes.substr(0, bytes.find('\0'));
        } else if (field.type == "int8") {
            values.numbers[field.name] = numberAt<std::int8_t>(bytes);
        } else if (field.type == "bool") {
            values.numbers[field.name] = numberAt<std::uint8_t>(bytes);
        } else if (field.type == "int32") {
            values.numbers[field.name] = numberAt<std::int32_t>(bytes);
        } else if (field.type == "float32") {
            values.numbers[field.name] = numberAt<float>(bytes);
        } else if (field.type == "zero") {
            EXPECT_EQ(bytes, std::string(field.size, '\0'))
                << record.name << " at offset " << field.offset;
        } else {
            const Values nested = decode(this->record("", "A " + field.type), bytes);
            for (const auto& [name, number] : nested.numbers)
                values.numbers[field.name + " " + name] = number;
            for (const auto& [name, text] : nested.texts)
                values.texts[field.name + " " + name] = text;
        }
    }
    return values;
}

std::string ProtocolDocument::encode(const Record& record, const Values& values) const {
    std::string datagram;
    for (const Field& field : record.fields) {
        datagram.resize(field.offset);
        if (field.name == "code")
            datagram += unquoted(field.meaning);
        else if (const auto text = values.texts.find(field.name); text != values.texts.end())
            datagram += text->second;
        else if (const auto number = values.numbers.find(field.name);
                 number != values.numbers.end())
            datagram += field.type == "int32" ? bytesOf<std::int32_t>(number->second)
                                              : bytesOf<std::int8_t>(number->second);
        if (field.size)
            datagram.resize(field.offset + field.size);
    }
    return datagram;
}
