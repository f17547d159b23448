#pragma once

#include "MapManager.h"
#include "Messages.h"
#include "NetworkInfo.h"
#include "Player.h"

#include <pthread.h>
#include <queue>
#include <string>
#include <vector>

/// The whole game. The main thread owns everything here; the receive thread only copies `sockInfo`
/// and pushes onto `inMessages`.
struct Server {
    /// In the order of joining, with unique identifiers, at most maxPlayers.
    std::vector<Player> players;

    /// Datagrams received and not yet processed; without limit.
    std::queue<GenericMessage> inMessages;
    MapManager mapMan;
    SocketInfo sockInfo;

    /// Guards `inMessages` between the two threads. Owned by main; null where one thread does all.
    pthread_mutex_t* inMessagesMutex = nullptr;

    /// Prints the sizes of the state records, binds the socket at `port`, then reads the map. Any
    /// failure ends the process.
    void init(int port);

    /// Closes the socket.
    void cleanup();

    std::queue<GenericMessage>* getInMessagesPtr() { return &inMessages; }

    /// The player with this identifier or null; valid until someone joins or leaves.
    Player* playerByID(char id);
    bool playerIDExists(char id);

    /// Admits the sender of a join record under the lowest free identifier, answers it, tells
    /// everyone, and returns the identifier. Does not check whether the room is full: dispatch()
    /// does.
    char playerJoin(const GenericMessage* msg);

    /// Sends `length` bytes to every player in the order of joining.
    void broadcast(const void* data, int length);

    /// Removes a player and tells the others; nothing happens if there is none.
    void playerDisconnect(char id);

    /// Empties the inbound queue: joins, leaves, keys, views, chat and signs of life take effect in
    /// the order of arrival. The identifier in a record is trusted, its address is not compared.
    void readMessages();

    /// One tick of the game.
    void update();

  private:
    /// The records in hand, empty between ticks; a member so that its memory is kept.
    std::queue<GenericMessage> records_;

    /// Applies one record. Refuses a fifth player.
    void dispatch(const GenericMessage& record);

    /// Tells every player in the server's own name; text that the record cannot hold is cut.
    void broadcastNotice(const std::string& text);

    /// Moves every player and drops the silent.
    void advancePlayers(float now);

    /// Sends everybody one state of all players.
    void broadcastState();

    /// Follows the shot of every living player who holds the fire key.
    void resolveShots(float now);

    /// Soaks everybody else whose body the segment from the shooter to `end` crosses.
    void soakPlayersOnSegment(Player& shooter, vec3 end, float now);
};

/// Holds a mutex for a scope; null means no locking.
class ScopedLock {
  public:
    explicit ScopedLock(pthread_mutex_t* mutex) : mutex_(mutex) {
        if (mutex_)
            pthread_mutex_lock(mutex_);
    }
    ~ScopedLock() {
        if (mutex_)
            pthread_mutex_unlock(mutex_);
    }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

  private:
    pthread_mutex_t* mutex_;
};
