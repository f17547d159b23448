#pragma once

namespace drench::keeper {

/// Readies a TCP socket of the HTTP library before it is bound or connected: it is not handed on to
/// servers, and two keepers cannot share its port, as by the library's own settings.
void prepareSocket(int socket);

} // namespace drench::keeper
