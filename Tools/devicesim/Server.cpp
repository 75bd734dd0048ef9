#include "Tools/devicesim/Server.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

namespace devicesim {
namespace {

constexpr int kBacklog = 128;
/// How long to wait for a descriptor when there are too many clients.
constexpr int kRetryMs = 100;

[[noreturn]] void Refuse(const std::string& path, const std::string& reason) {
    throw ServerError(path + ": " + reason);
}

[[noreturn]] void RefuseWithError(const std::string& path, int error) {
    Refuse(path, std::generic_category().message(error));
}

sockaddr_un AddressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty()) Refuse("''", "is no path for a socket");
    if (path.size() >= sizeof address.sun_path) {
        Refuse(path,
               "is too long for a socket: " + std::to_string(sizeof address.sun_path - 1) + " bytes at most");
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    return address;
}

const sockaddr* Generic(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

int NewSocket(const std::string& path) {
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    if (descriptor < 0) RefuseWithError(path, errno);
    return descriptor;
}

/// Removes the socket of a server that is no more.
void MakeRoom(const std::string& path, const sockaddr_un& address) {
    struct stat info {};
    if (lstat(path.c_str(), &info) != 0) return;
    if (!S_ISSOCK(info.st_mode)) Refuse(path, "is there already, and is no socket");
    const int probe = NewSocket(path);
    const bool isAlive = connect(probe, Generic(address), sizeof address) == 0;
    close(probe);
    if (isAlive) Refuse(path, "another server listens there");
    unlink(path.c_str());
}

int ListeningSocket(const std::string& path) {
    const sockaddr_un address = AddressOf(path);
    MakeRoom(path, address);
    const int descriptor = NewSocket(path);
    const mode_t mask = umask(0077);
    const bool isBound = bind(descriptor, Generic(address), sizeof address) == 0;
    const int error = errno;
    umask(mask);
    if (isBound && listen(descriptor, kBacklog) == 0) return descriptor;
    close(descriptor);
    RefuseWithError(path, isBound ? errno : error);
}

}  // namespace

Server::Server(const std::string& path, std::function<void(const Connection&)> handle)
    : m_path(path), m_handle(std::move(handle)), m_listening(ListeningSocket(path)) {
    std::array<int, 2> ends{-1, -1};
    if (pipe(ends.data()) != 0) RefuseWithError(path, errno);
    m_stopReadEnd = ends[0];
    m_stopWriteEnd = ends[1];
    m_acceptor = std::thread([this] { AcceptUntilToldToStop(); });
}

Server::~Server() {
    close(m_stopWriteEnd);
    m_acceptor.join();
    unlink(m_path.c_str());
    close(m_listening);
    close(m_stopReadEnd);
    for (Client& client : m_clients)
        client.connection.Shutdown();
    for (Client& client : m_clients)
        client.thread.join();
}

void Server::AcceptUntilToldToStop() {
    for (;;) {
        std::array<pollfd, 2> watched{pollfd{m_stopReadEnd, POLLIN, 0}, pollfd{m_listening, POLLIN, 0}};
        if (poll(watched.data(), watched.size(), -1) < 0) continue;
        if (watched[0].revents != 0) return;
        ForgetDone();
        Accept();
    }
}

void Server::Accept() {
    const int descriptor = accept(m_listening, nullptr, nullptr);
    if (descriptor < 0) {
        // The client waits in the queue, which would wake us again and again.
        pollfd stop{m_stopReadEnd, POLLIN, 0};
        if (errno == EMFILE || errno == ENFILE) poll(&stop, 1, kRetryMs);
        return;
    }
    Client& client = m_clients.emplace_back(descriptor);
    try {
        client.thread = std::thread([this, &client] { Serve(client); });
    } catch (const std::system_error&) {
        m_clients.pop_back();  // no thread for it: the client sees its connection end
    }
}

void Server::Serve(Client& client) {
    m_handle(client.connection);
    client.connection.Shutdown();
    client.isDone = true;
}

void Server::ForgetDone() {
    m_clients.remove_if([](Client& client) {
        if (!client.isDone) return false;
        client.thread.join();
        return true;
    });
}

}  // namespace devicesim
