#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "Tools/devicesim/Connection.h"
#include "Tools/devicesim/Plist.h"

/// Two connections that are connected with each other.
struct SocketPair {
    SocketPair();

    std::unique_ptr<devicesim::Connection> ours;
    std::unique_ptr<devicesim::Connection> theirs;
};

/// Connects to a UNIX socket. \return null when nobody listens there.
std::unique_ptr<devicesim::Connection> ConnectTo(const std::string& path);

/// What comes until the other side ends the connection.
std::string ReadToEnd(const devicesim::Connection& connection);

/// Asks a daemon. The answer must bear the tag of the question.
/// \return nothing when the connection ends instead.
std::optional<devicesim::Plist> AskDaemon(const devicesim::Connection& connection,
                                          const devicesim::Plist& request, std::uint32_t tag = 5);
/// Reads what the daemon sends unasked.
std::optional<devicesim::Plist> ReadNotice(const devicesim::Connection& connection);
/// Asks a service.
std::optional<devicesim::Plist> AskService(const devicesim::Connection& connection,
                                           const devicesim::Plist& request);

/// {name: value}, the usual beginning of a request.
devicesim::Plist Request(const std::string& name, const std::string& value);
