#pragma once

#include <csignal>

namespace drench {

/// Set by the first SIGINT or SIGTERM after listenForSignals().
inline volatile std::sig_atomic_t stopAsked = 0;

/// After this call the first SIGINT or SIGTERM asks to stop, and a second one ends the process.
inline void listenForSignals() {
    struct sigaction action {};
    action.sa_handler = [](int) { stopAsked = 1; };
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

/// Leaves SIGINT and SIGTERM to the other threads: they do not interrupt this one.
inline void blockStopSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

} // namespace drench
