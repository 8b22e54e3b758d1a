#pragma once
// Connections in memory, with the wire between them open to whoever plays the server.

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "ftp/engine/net/stream.h"
#include "ftp/engine/wire/certificate.h"

namespace fuzz {

/// One connection, as both ends see it. Whoever changes something calls moved.cancel().
struct Pipe {
    explicit Pipe(asio::io_context& context) : moved(context) {}

    std::string to_client;           // on its way
    std::string to_server;           // on its way
    std::string sent;                // all that the server has ever put on it
    std::string taken;               // all that the server has taken off it
    std::size_t piece = 64 * 1024;   // at most so many bytes arrive at once
    std::size_t window = 64 * 1024;  // more is not taken from the client before the server reads
    bool stands = false;             // the server has accepted it
    bool server_ended = false;       // nothing more will come
    bool server_crashed = false;     // nothing more will come, in a bad way
    bool client_ended = false;
    bool client_closed = false;
    bool client_reset = false;
    bool secured = false;                            // the client asks for a handshake
    bool shaken_hands = false;                       // the server has answered it
    bool handshake_fails = false;                    // or not so
    asio::steady_timer moved;                        // cancelled when any of these has changed
    std::function<void(std::string_view)> on_write;  // sees what the client writes, where there is one
};

class MemoryTransport : public ftp::Transport {
 public:
    /// `on_command` sees all that is written to control connections, as it is written.
    MemoryTransport(asio::io_context& context, std::function<void(std::string_view)> on_command)
        : context_(context), on_command_(std::move(on_command)), connecting_(context) {}

    asio::any_io_executor Executor() override { return context_.get_executor(); }
    ftp::Task<std::unique_ptr<ftp::Stream>> ConnectControl(ftp::HostAndPort where) override;
    std::string PeerAddress() const override { return "127.0.0.1"; }
    ftp::Result<std::unique_ptr<ftp::Stream>> StartData(std::uint16_t port) override;
    ftp::Result<std::unique_ptr<ftp::Listener>> Listen() override;
    /// TLS without the arithmetic: who does not shake hands has none, and everything else goes as it is.
    std::unique_ptr<ftp::SecureStream> SecureControl(std::unique_ptr<ftp::Stream> plain,
                                                     const std::string& host) override;
    std::unique_ptr<ftp::Stream> SecureData(std::unique_ptr<ftp::Stream> plain) override;
    void CancelConnect() override;

    /// What servers show from here on.
    ftp::Certificate certificate;

    /// The newest connections, null before the first.
    const std::shared_ptr<Pipe>& Control() const { return control_; }
    const std::shared_ptr<Pipe>& Data() const { return data_; }
    /// The client waits for the control connection to be accepted.
    bool Connecting() const { return control_ && !control_->stands && !Gone(*control_); }
    void Accept(Pipe& pipe);
    void ShakeHands(Pipe& pipe, bool well);
    void End(Pipe& pipe);
    /// Also refuses a connection that does not stand yet.
    void Crash(Pipe& pipe);
    /// Closes everything; what is opened from now on is refused.
    void GoAway();

    static bool Gone(const Pipe& pipe) {
        return pipe.server_ended || pipe.server_crashed || pipe.client_closed;
    }

 private:
    std::shared_ptr<Pipe> NewData();

    asio::io_context& context_;
    std::function<void(std::string_view)> on_command_;
    std::shared_ptr<Pipe> control_, data_;
    asio::steady_timer connecting_;
    bool cancelled_ = false;
    bool away_ = false;
};

}  // namespace fuzz
