#pragma once

#include "src/Messages.h"

#include <cstring>
#include <string>

// The datagrams of a client, as bytes, and readers of the server's.

template<typename Record>
std::string bytesOf(const Record& record) {
    return {reinterpret_cast<const char*>(&record), sizeof record};
}

/// Its length follows from the name and may exceed a JoinMessage.
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

/// 32 bytes for any length of the text.
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

/// The bytes of a server notice with this text on arrival.
inline std::string noticeDatagram(const std::string& text) {
    return chatDatagram(serverSpeaker, text);
}

/// Reads `datagram` as a state; false if it is not one.
inline bool readState(const std::string& datagram, UpdateMessage& state) {
    if (datagram.size() != sizeof state || datagram[0] != messageCode::worldState)
        return false;
    std::memcpy(static_cast<void*>(&state), datagram.data(), sizeof state);
    return true;
}
