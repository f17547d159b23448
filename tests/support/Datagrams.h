#pragma once

#include "src/Messages.h"

#include <cstring>
#include <string>

// What a client sends, as bytes, and what it reads in return.

template<typename Record>
std::string bytesOf(const Record& record) {
    return {reinterpret_cast<const char*>(&record), sizeof record};
}

/// As long as the name asks for, which may be more than a JoinMessage.
inline std::string joinDatagram(const std::string& name) {
    std::string datagram(1, messageCode::join);
    datagram += name;
    datagram.push_back('\0');
    return datagram;
}

inline std::string leaveDatagram(char id) {
    return bytesOf(LeaveMessage{.id = id});
}

inline std::string keyDatagram(char id, int key, bool down) {
    return bytesOf(KeyMessage{.id = id, .key = static_cast<signed char>(key), .down = down});
}

inline std::string viewDatagram(char id, int dx, int dy) {
    return bytesOf(ViewMessage{.id = id, .dx = dx, .dy = dy});
}

/// 32 bytes, whatever the length of the text.
inline std::string chatDatagram(char id, const std::string& text) {
    TalkMessage talk{.id = id};
    text.copy(talk.text, sizeof talk.text);
    return bytesOf(talk);
}

inline std::string keepAliveDatagram(char id) {
    return bytesOf(KeepAliveMessage{.id = id});
}

inline std::string acceptanceDatagram(char id) {
    return bytesOf(AcceptanceMessage{.id = id});
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
