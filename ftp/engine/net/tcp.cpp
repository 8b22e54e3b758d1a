#include <algorithm>
#include <asio/co_spawn.hpp>
#include <asio/detached.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/redirect_error.hpp>
#include <asio/steady_timer.hpp>
#include <asio/use_awaitable.hpp>
#include <asio/write.hpp>
#include <list>
#include <system_error>
#include <vector>

#include "ftp/engine/net/resolver.h"
#include "ftp/engine/net/socket_calls.h"
#include "ftp/engine/net/stream.h"
#include "ftp/engine/net/tls.h"

namespace ftp {
namespace {

using asio::ip::tcp;

Failure FailureOf(const asio::error_code& error) {
    FailureKind kind = FailureKind::ConnectionLost;
    if (error == asio::error::operation_aborted || error == asio::error::bad_descriptor) {
        kind = FailureKind::Cancelled;
    } else if (error == asio::error::connection_refused) {
        kind = FailureKind::ConnectionRefused;
    } else if (error == asio::error::host_unreachable || error == asio::error::network_unreachable) {
        kind = FailureKind::Unreachable;
    } else if (error == asio::error::timed_out) {
        kind = FailureKind::TimedOut;
    }
    return Failure{kind, 0, {}};
}

class TcpStream : public Stream {
 public:
    explicit TcpStream(tcp::socket socket, tcp::endpoint peer = {})
        : socket_(std::move(socket)), peer_(std::move(peer)) {
        asio::error_code ignored;
        socket_.set_option(tcp::no_delay(true), ignored);
        // What waits in the kernel is not yet on its way: a short queue keeps the bytes in the cache, the
        // progress honest and an abort prompt, and a long line is kept as full as with a long queue.
        LimitUnsent(socket_, 16 * 1024);
    }

    static Result<std::unique_ptr<TcpStream>> Start(const asio::any_io_executor& executor,
                                                    const tcp::endpoint& to) {
        tcp::socket socket(executor);
        asio::error_code error;
        socket.open(to.protocol(), error);
        if (!error) socket.non_blocking(true, error);
        if (!error) error = StartConnecting(socket, to);
        if (error) return Fail(FailureOf(error));
        return std::make_unique<TcpStream>(std::move(socket), to);
    }

    Task<> Connected() override {
        asio::error_code error;
        co_await socket_.async_wait(tcp::socket::wait_write,
                                    asio::redirect_error(asio::use_awaitable, error));
        if (!error) error = OutcomeOfConnecting(socket_);
        if (error) co_return Fail(FailureOf(error));
        co_return Result<>{};
    }

    Task<std::size_t> Read(asio::mutable_buffer into) override {
        asio::error_code error;
        const std::size_t got =
            co_await socket_.async_read_some(into, asio::redirect_error(asio::use_awaitable, error));
        if (error && error != asio::error::eof) co_return Fail(FailureOf(error));
        if (acknowledges_at_once_ && !error) AcknowledgeAtOnce();
        co_return got;
    }

    std::size_t ReadAtOnce(asio::mutable_buffer into) override {
        asio::error_code none;  // the socket does not block
        return socket_.is_open() ? socket_.receive(into, 0, none) : 0;
    }

    /// For the control connection. Commands that were sent ahead leave us silent while their replies come,
    /// and a server that waits for our acknowledgement before its next small packet (Nagle) would wait 40 ms
    /// each time.
    void AcknowledgeAtOnce() {
        acknowledges_at_once_ = true;
        AcknowledgeNow(socket_);
    }

    Task<> Write(asio::const_buffer bytes) override {
        asio::error_code error;
        co_await asio::async_write(socket_, bytes, asio::redirect_error(asio::use_awaitable, error));
        if (error) co_return Fail(FailureOf(error));
        co_return Result<>{};
    }

    Task<std::size_t> Send(SourceFile& file, std::size_t limit) override {
        while (file.Handle() >= 0) {
            // Even where there is room: a peer faster than the disk must not keep the event loop from its
            // other work.
            asio::error_code error;
            co_await socket_.async_wait(tcp::socket::wait_write,
                                        asio::redirect_error(asio::use_awaitable, error));
            if (error) co_return Fail(FailureOf(error));
            const std::size_t sent = SendFromFile(socket_, file.Handle(), limit, error);
            if (!error) co_return sent;
            if (error == asio::error::would_block) continue;
            if (error == asio::error::operation_not_supported) break;
            if (error == std::errc::io_error) co_return Fail(FailureKind::LocalOther, {}, error.value());
            co_return Fail(FailureOf(error));
        }
        co_return co_await SendByHand(file, limit);
    }

    std::size_t Unsent() const override {
        return Unacknowledged(const_cast<tcp::socket&>(socket_));  // native_handle() is not const
    }

    Task<> EndWriting() override {
        asio::error_code ignored;
        socket_.shutdown(tcp::socket::shutdown_send, ignored);
        co_return Result<>{};
    }

    void Close() override {
        asio::error_code ignored;
        socket_.close(ignored);
    }

    void Reset() override {
        asio::error_code ignored;
        socket_.set_option(asio::socket_base::linger(true, 0), ignored);
        socket_.close(ignored);
    }

    const tcp::endpoint& Peer() const { return peer_; }
    tcp::endpoint Own() const {
        asio::error_code gone;
        return socket_.local_endpoint(gone);
    }

 private:
    /// For files that the system does not send by itself.
    Task<std::size_t> SendByHand(SourceFile& file, std::size_t limit) {
        std::vector<char> buffer(std::min<std::size_t>(limit, 256 * 1024));
        const auto got = file.Read(buffer);
        if (!got) co_return Fail(got.error());
        const auto written = co_await Write(asio::buffer(buffer.data(), *got));
        if (!written) co_return Fail(written.error());
        co_return *got;
    }

    tcp::socket socket_;
    tcp::endpoint peer_;
    bool acknowledges_at_once_ = false;
};

class TcpListener : public Listener {
 public:
    TcpListener(tcp::acceptor acceptor, asio::ip::address peer)
        : acceptor_(std::move(acceptor)), peer_(std::move(peer)) {}

    std::string Address() const override { return acceptor_.local_endpoint().address().to_string(); }
    bool IsIpv6() const override { return acceptor_.local_endpoint().address().is_v6(); }
    std::uint16_t Port() const override { return acceptor_.local_endpoint().port(); }

    Task<std::unique_ptr<Stream>> Accept() override {
        for (;;) {
            asio::error_code error;
            tcp::socket socket =
                co_await acceptor_.async_accept(asio::redirect_error(asio::use_awaitable, error));
            if (error) co_return Fail(FailureOf(error));
            const auto from = socket.remote_endpoint(error);
            if (error || from.address() != peer_) continue;  // a stranger: closed by going out of scope
            socket.non_blocking(true, error);
            if (error) co_return Fail(FailureOf(error));
            co_return std::unique_ptr<Stream>(std::make_unique<TcpStream>(std::move(socket)));
        }
    }

    void Close() override {
        asio::error_code ignored;
        acceptor_.close(ignored);
    }

 private:
    tcp::acceptor acceptor_;
    asio::ip::address peer_;
};

/// Several connections started one after the other; the first that stands wins, the others are closed.
struct Race {
    explicit Race(const asio::any_io_executor& executor) : moved(executor) {}
    void Settle() {
        settled = true;
        for (TcpStream* runner : runners) runner->Close();
        moved.cancel();
    }

    asio::steady_timer moved;  // cancelled when a runner arrives or drops out
    std::list<TcpStream*> runners;
    std::unique_ptr<TcpStream> winner;
    Failure last_failure{FailureKind::Cancelled, 0, {}};
    bool settled = false;  // somebody won, or the race was called off
};

asio::awaitable<void> Run(std::shared_ptr<Race> race, std::unique_ptr<TcpStream> runner) {
    const auto place = race->runners.insert(race->runners.end(), runner.get());
    const auto arrived = co_await runner->Connected();
    race->runners.erase(place);
    if (race->settled) co_return;
    if (arrived) {
        race->winner = std::move(runner);
        race->Settle();
    } else {
        race->last_failure = arrived.error();
        race->moved.cancel();
    }
}

class TcpTransport : public Transport {
 public:
    explicit TcpTransport(asio::any_io_executor executor) : executor_(std::move(executor)) {}

    asio::any_io_executor Executor() override { return executor_; }

    Task<std::unique_ptr<Stream>> ConnectControl(HostAndPort where) override {
        cancelled_ = false;
        auto endpoints = co_await LookUp(std::move(where), cancel_look_up_);
        if (!endpoints) co_return Fail(endpoints.error());
        if (cancelled_) co_return Fail(FailureKind::Cancelled);  // while the answer was on its way here
        race_ = std::make_shared<Race>(executor_);
        const auto race = race_;
        for (const tcp::endpoint& endpoint : *endpoints) {
            if (race->settled) break;
            auto runner = TcpStream::Start(executor_, endpoint);
            if (!runner) {
                race->last_failure = runner.error();
                continue;
            }
            asio::co_spawn(executor_, Run(race, std::move(*runner)), asio::detached);
            co_await HeadStart(*race, kHeadStart);
        }
        while (!race->settled && !race->runners.empty()) co_await HeadStart(*race, std::chrono::hours(1));
        race_.reset();
        if (cancelled_) co_return Fail(FailureKind::Cancelled);
        if (!race->winner) co_return Fail(race->last_failure);
        race->winner->AcknowledgeAtOnce();
        peer_ = race->winner->Peer().address();
        own_ = race->winner->Own().address();
        co_return std::unique_ptr<Stream>(std::move(race->winner));
    }

    std::string PeerAddress() const override { return peer_.to_string(); }

    Result<std::unique_ptr<Stream>> StartData(std::uint16_t port) override {
        auto stream = TcpStream::Start(executor_, tcp::endpoint(peer_, port));
        if (!stream) return Fail(stream.error());
        return std::unique_ptr<Stream>(std::move(*stream));
    }

    Result<std::unique_ptr<Listener>> Listen() override {
        asio::error_code error;
        tcp::acceptor acceptor(executor_);
        const tcp::endpoint any_port(own_, 0);
        acceptor.open(any_port.protocol(), error);
        if (!error) acceptor.bind(any_port, error);
        if (!error) acceptor.listen(1, error);
        if (error) return Fail(FailureOf(error));
        return std::unique_ptr<Listener>(std::make_unique<TcpListener>(std::move(acceptor), peer_));
    }

    std::unique_ptr<SecureStream> SecureControl(std::unique_ptr<Stream> plain,
                                                const std::string& host) override {
        if (!tls_) tls_ = std::make_unique<TlsClient>();
        return tls_->SecureControl(std::move(plain), host);
    }
    std::unique_ptr<Stream> SecureData(std::unique_ptr<Stream> plain) override {
        return tls_->SecureData(std::move(plain));
    }

    void CancelConnect() override {
        cancelled_ = true;
        if (cancel_look_up_) cancel_look_up_();
        if (race_) race_->Settle();
    }

 private:
    static constexpr std::chrono::milliseconds kHeadStart{250};

    /// Until a runner arrives or drops out, or the time is up.
    static asio::awaitable<void> HeadStart(Race& race, std::chrono::milliseconds time) {
        asio::error_code woken;
        race.moved.expires_after(time);
        co_await race.moved.async_wait(asio::redirect_error(asio::use_awaitable, woken));
    }

    asio::any_io_executor executor_;
    std::shared_ptr<Race> race_;
    std::function<void()> cancel_look_up_;
    bool cancelled_ = false;
    asio::ip::address peer_, own_;
    std::unique_ptr<TlsClient> tls_;  // made when it is first asked for
};

}  // namespace

std::unique_ptr<Transport> MakeTcpTransport(asio::any_io_executor executor) {
    return std::make_unique<TcpTransport>(std::move(executor));
}

}  // namespace ftp
