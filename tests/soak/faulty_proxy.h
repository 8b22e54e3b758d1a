#pragma once
// A TCP proxy in front of an FTP server that does to connections what networks do to them.
//
// Control and data connections both pass through it: it opens ports of its own and puts them into the 227 and
// 229 replies that it hands on. Active data connections go past it. Plain text only.

#include <cstddef>
#include <cstdint>
#include <memory>

namespace soak {

class FaultyProxy {
 public:
    struct Options {
        std::uint16_t server_port = 0;  // on 127.0.0.1
        unsigned seed = 0;
        /// Uploads may end early, too, in a way that the server takes for the end of the file.
        bool cuts_uploads = false;
        /// The server takes any end of a connection for the end of the file.
        bool server_is_trusting = false;
    };
    /// Listens on 127.0.0.1, and runs on a thread of its own.
    explicit FaultyProxy(const Options& options);
    /// Resets all connections.
    ~FaultyProxy();
    FaultyProxy(const FaultyProxy&) = delete;
    FaultyProxy& operator=(const FaultyProxy&) = delete;

    std::uint16_t Port() const;
    /// Connections that begin from now on have no faults, or have them again.
    void SetCalm(bool calm);
    /// Ends all connections at once: as a server does, or as a lost line.
    void EndAll(bool in_order);
    /// Connections that were closed, reset, cut or stalled so far.
    std::uint64_t Faults() const;
    /// Connections that stand.
    std::size_t Connections() const;

 private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace soak
