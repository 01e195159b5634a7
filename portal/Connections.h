#pragma once

namespace vendril::portal {

// The HTTP library keeps its sockets to itself; these find them among the process's descriptors.

/// Resets (RST) the connection between the port `port` of this computer and the client's `peer`, so
/// that the client sees it reset rather than closed. Only while the caller's thread serves that
/// connection: the descriptor stays open, for the library to close.
void resetConnection(int port, int peer);

/// Shuts down every connection to the port `port` of this computer. The library would wait for
/// clients that keep theirs open.
void breakOffConnections(int port);

}  // namespace vendril::portal
