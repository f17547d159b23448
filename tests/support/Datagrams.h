#pragma once

#include "src/Messages.h"

#include <cstring>
#include <string>

// What a client sends, as bytes, and what it reads in return.

inline std::string joinDatagram(const std::string& name) {
    std::string datagram(1, messageCode::join);
    datagram += name;
    datagram.push_back('\0');
    return datagram;
}

inline std::string leaveDatagram(char id) {
    return {messageCode::leave, id};
}

inline std::string keyDatagram(char id, int key, bool down) {
    return {messageCode::key, id, static_cast<char>(key), static_cast<char>(down)};
}

inline std::string viewDatagram(char id, int dx, int dy) {
    std::string datagram = {messageCode::view, id, 0, 0};
    datagram.append(reinterpret_cast<const char*>(&dx), sizeof dx);
    datagram.append(reinterpret_cast<const char*>(&dy), sizeof dy);
    return datagram;
}

/// 32 bytes, whatever the length of the text.
inline std::string chatDatagram(char id, const std::string& text) {
    std::string datagram = {messageCode::chat, id};
    datagram += text;
    datagram.resize(sizeof(TalkMessage));
    return datagram;
}

inline std::string keepAliveDatagram(char id) {
    return {messageCode::keepAlive, id};
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
