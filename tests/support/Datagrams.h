#pragma once

#include "src/Messages.h"

#include <cstring>
#include <string>

// Records of both ends as bytes.

/// A record's bytes, as they are sent.
template<class Record>
std::string bytesOf(const Record& record) {
    return {reinterpret_cast<const char*>(&record), sizeof record};
}

/// Whatever the length of the name.
inline std::string joinDatagram(const std::string& name) {
    return messageCode::join + name + '\0';
}

inline std::string leaveDatagram(char id) {
    LeaveMessage record;
    record.id = id;
    return bytesOf(record);
}

inline std::string keyDatagram(char id, int key, bool down) {
    KeyMessage record;
    record.id = id;
    record.key = static_cast<signed char>(key);
    record.down = static_cast<char>(down);
    return bytesOf(record);
}

inline std::string viewDatagram(char id, int dx, int dy) {
    ViewMessage record;
    record.id = id;
    record.dx = dx;
    record.dy = dy;
    return bytesOf(record);
}

/// 32 bytes, whatever the length of the text.
inline std::string chatDatagram(char id, const std::string& text) {
    TalkMessage record;
    record.id = id;
    text.copy(record.text, sizeof record.text);
    return bytesOf(record);
}

inline std::string keepAliveDatagram(char id) {
    KeepAliveMessage record;
    record.id = id;
    return bytesOf(record);
}

inline std::string acceptanceDatagram(char id) {
    AcceptanceMessage record;
    record.id = id;
    return bytesOf(record);
}

inline std::string refusalDatagram() {
    return bytesOf(RefusalMessage());
}

/// A server notice with this text, as it must arrive.
inline std::string noticeDatagram(const std::string& text) {
    return chatDatagram(serverSpeaker, text);
}

/// The record that `datagram` is, if it is one.
inline bool readState(const std::string& datagram, UpdateMessage& state) {
    if (datagram.size() != sizeof state || datagram[0] != messageCode::worldState)
        return false;
    std::memcpy(static_cast<void*>(&state), datagram.data(), sizeof state);
    return true;
}
