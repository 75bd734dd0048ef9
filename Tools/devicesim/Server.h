#pragma once

#include <atomic>
#include <functional>
#include <list>
#include <stdexcept>
#include <string>
#include <thread>

#include "Tools/devicesim/Connection.h"

namespace devicesim {

/// what() says why the socket cannot be made.
class ServerError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Listens on a UNIX socket from its construction to its destruction, and serves each client on a thread of
/// its own.
class Server {
 public:
    /// \param path    where the socket is made, for its owner only. One that a dead server has left there is
    ///                replaced; it is removed at the end.
    /// \param handle  serves a client, on the client's thread; its connection is ended when it returns.
    /// \throws ServerError
    Server(const std::string& path, std::function<void(const Connection&)> handle);
    /// Ends all connections and waits for their threads.
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

 private:
    struct Client {
        explicit Client(int descriptor) : connection(descriptor) {}

        Connection connection;
        std::atomic<bool> isDone{false};
        std::thread thread;
    };

    void AcceptUntilToldToStop();
    void Accept();
    void Serve(Client& client);
    void ForgetDone();

    const std::string m_path;
    const std::function<void(const Connection&)> m_handle;
    int m_listening = -1;
    int m_stopReadEnd = -1;
    int m_stopWriteEnd = -1;      ///< closed to stop the accepting thread
    std::list<Client> m_clients;  ///< of the accepting thread
    std::thread m_acceptor;
};

}  // namespace devicesim
