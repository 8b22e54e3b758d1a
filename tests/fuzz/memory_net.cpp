#include "tests/fuzz/memory_net.h"

#include <algorithm>
#include <asio/post.hpp>
#include <asio/redirect_error.hpp>
#include <asio/use_awaitable.hpp>
#include <utility>

#include "tests/fuzz/fuzz.h"

namespace fuzz {
namespace {

using ftp::FailureKind;

asio::awaitable<void> Wait(asio::steady_timer& timer) {
    asio::error_code woken;
    timer.expires_at(asio::steady_timer::time_point::max());
    co_await timer.async_wait(asio::redirect_error(asio::use_awaitable, woken));
}

/// The client's end.
class MemoryStream : public ftp::Stream {
 public:
    explicit MemoryStream(std::shared_ptr<Pipe> pipe) : pipe_(std::move(pipe)) {}
    ~MemoryStream() override { Close(); }

    ftp::Task<> Connected() override {
        const auto pipe = pipe_;
        while (!pipe->stands && !pipe->client_closed && !pipe->server_crashed) co_await Wait(pipe->moved);
        if (pipe->client_closed) co_return ftp::Fail(FailureKind::Cancelled);
        if (!pipe->stands) co_return ftp::Fail(FailureKind::ConnectionRefused);
        co_return ftp::Result<>{};
    }

    ftp::Task<std::size_t> Read(asio::mutable_buffer into) override {
        const auto pipe = pipe_;
        Require(!std::exchange(reading_, true), "one reader at a time");
        while (!pipe->client_closed && pipe->to_client.empty() && !pipe->server_ended &&
               !pipe->server_crashed)
            co_await Wait(pipe->moved);
        if (pipe->client_closed) co_return ftp::Fail(FailureKind::Cancelled);
        reading_ = false;  // this object may have gone with Close
        if (pipe->server_crashed) co_return ftp::Fail(FailureKind::ConnectionLost);
        const std::size_t size = std::min({pipe->piece, pipe->to_client.size(), into.size()});
        std::copy_n(pipe->to_client.begin(), size, static_cast<char*>(into.data()));
        pipe->to_client.erase(0, size);
        co_await asio::post(pipe->moved.get_executor(), asio::use_awaitable);
        co_return size;
    }

    ftp::Task<> Write(asio::const_buffer bytes) override {
        const auto pipe = pipe_;
        Require(!pipe->client_ended, "nothing is written behind the end");
        while (!pipe->client_closed && !pipe->server_ended && !pipe->server_crashed &&
               pipe->to_server.size() >= pipe->window)
            co_await Wait(pipe->moved);
        if (pipe->client_closed) co_return ftp::Fail(FailureKind::Cancelled);
        if (pipe->server_ended || pipe->server_crashed) co_return ftp::Fail(FailureKind::ConnectionLost);
        const std::string_view text(static_cast<const char*>(bytes.data()), bytes.size());
        if (pipe->on_write) pipe->on_write(text);
        pipe->to_server += text;
        co_await asio::post(pipe->moved.get_executor(), asio::use_awaitable);
        co_return ftp::Result<>{};
    }

    ftp::Task<std::size_t> Send(ftp::SourceFile& file, std::size_t limit) override {
        std::string buffer(std::min(pipe_->piece, limit), '\0');
        const auto got = file.Read(buffer);
        if (!got || *got == 0) co_return got;
        const auto written = co_await Write(asio::buffer(buffer.data(), *got));
        if (!written) co_return ftp::Fail(written.error());
        co_return got;
    }

    std::size_t Unsent() const override { return pipe_->to_server.size(); }
    ftp::Task<> EndWriting() override {
        pipe_->client_ended = true;
        co_return ftp::Result<>{};
    }
    void Close() override {
        if (std::exchange(pipe_->client_closed, true)) return;
        pipe_->moved.cancel();
    }
    void Reset() override {
        if (!pipe_->client_closed) pipe_->client_reset = true;
        Close();
    }

 private:
    std::shared_ptr<Pipe> pipe_;
    bool reading_ = false;
};

class MemorySecureStream : public ftp::SecureStream {
 public:
    MemorySecureStream(std::unique_ptr<ftp::Stream> plain, std::shared_ptr<Pipe> pipe,
                       ftp::Certificate certificate)
        : plain_(std::move(plain)), pipe_(std::move(pipe)), certificate_(std::move(certificate)) {}

    ftp::Task<> Connected() override {
        const auto stands = co_await plain_->Connected();
        if (!stands) co_return stands;
        const auto pipe = pipe_;
        pipe->secured = true;
        while (!pipe->shaken_hands && !pipe->handshake_fails && !MemoryTransport::Gone(*pipe))
            co_await Wait(pipe->moved);
        if (pipe->client_closed) co_return ftp::Fail(FailureKind::Cancelled);
        if (!pipe->shaken_hands)
            co_return ftp::Fail(pipe->handshake_fails ? FailureKind::TlsFailed : FailureKind::ConnectionLost);
        co_return ftp::Result<>{};
    }
    ftp::Task<std::size_t> Read(asio::mutable_buffer into) override {
        Require(pipe_->shaken_hands, "nothing is read before the handshake");
        return plain_->Read(into);
    }
    ftp::Task<> Write(asio::const_buffer bytes) override {
        Require(pipe_->shaken_hands, "nothing is written before the handshake");
        return plain_->Write(bytes);
    }
    ftp::Task<std::size_t> Send(ftp::SourceFile& file, std::size_t limit) override {
        Require(pipe_->shaken_hands, "nothing is sent before the handshake");
        return plain_->Send(file, limit);
    }
    std::size_t Unsent() const override { return plain_->Unsent(); }
    ftp::Task<> EndWriting() override { return plain_->EndWriting(); }
    void Close() override { plain_->Close(); }
    void Reset() override { plain_->Reset(); }
    const ftp::Certificate& PeerCertificate() const override { return certificate_; }
    std::string Version() const override { return "TLSv1.3"; }

 private:
    std::unique_ptr<ftp::Stream> plain_;
    std::shared_ptr<Pipe> pipe_;
    ftp::Certificate certificate_;
};

class MemoryListener : public ftp::Listener {
 public:
    explicit MemoryListener(std::shared_ptr<Pipe> pipe) : pipe_(std::move(pipe)) {}
    ~MemoryListener() override { Close(); }

    std::string Address() const override { return "127.0.0.1"; }
    bool IsIpv6() const override { return false; }
    std::uint16_t Port() const override { return 5001; }
    ftp::Task<std::unique_ptr<ftp::Stream>> Accept() override {
        const auto pipe = pipe_;
        while (!pipe->stands && !pipe->client_closed) co_await Wait(pipe->moved);
        if (pipe->client_closed) co_return ftp::Fail(FailureKind::Cancelled);
        accepted_ = true;
        co_return std::unique_ptr<ftp::Stream>(std::make_unique<MemoryStream>(pipe));
    }
    void Close() override {
        if (accepted_ || std::exchange(pipe_->client_closed, true)) return;
        pipe_->moved.cancel();
    }

 private:
    std::shared_ptr<Pipe> pipe_;
    bool accepted_ = false;  // the stream has it
};

}  // namespace

ftp::Task<std::unique_ptr<ftp::Stream>> MemoryTransport::ConnectControl(ftp::HostAndPort) {
    cancelled_ = false;
    const auto pipe = control_ = std::make_shared<Pipe>(context_);
    pipe->on_write = on_command_;
    pipe->server_crashed = away_;
    while (!pipe->stands && !pipe->server_crashed && !cancelled_) co_await Wait(connecting_);
    pipe->client_closed |= cancelled_;
    if (cancelled_) co_return ftp::Fail(FailureKind::Cancelled);
    if (!pipe->stands) co_return ftp::Fail(FailureKind::ConnectionRefused);
    co_return std::unique_ptr<ftp::Stream>(std::make_unique<MemoryStream>(pipe));
}

std::shared_ptr<Pipe> MemoryTransport::NewData() {
    data_ = std::make_shared<Pipe>(context_);
    return data_;
}

ftp::Result<std::unique_ptr<ftp::Stream>> MemoryTransport::StartData(std::uint16_t port) {
    Require(port != 0, "a data connection goes to a port");
    const auto pipe = NewData();
    pipe->server_crashed = away_;
    return std::unique_ptr<ftp::Stream>(std::make_unique<MemoryStream>(pipe));
}

ftp::Result<std::unique_ptr<ftp::Listener>> MemoryTransport::Listen() {
    return std::unique_ptr<ftp::Listener>(std::make_unique<MemoryListener>(NewData()));
}

std::unique_ptr<ftp::SecureStream> MemoryTransport::SecureControl(std::unique_ptr<ftp::Stream> plain,
                                                                  const std::string&) {
    return std::make_unique<MemorySecureStream>(std::move(plain), control_, certificate);
}

std::unique_ptr<ftp::Stream> MemoryTransport::SecureData(std::unique_ptr<ftp::Stream> plain) {
    return std::make_unique<MemorySecureStream>(std::move(plain), data_, certificate);
}

void MemoryTransport::CancelConnect() {
    cancelled_ = true;
    connecting_.cancel();
}

void MemoryTransport::Accept(Pipe& pipe) {
    pipe.stands = true;
    pipe.moved.cancel();
    connecting_.cancel();
}

void MemoryTransport::ShakeHands(Pipe& pipe, bool well) {
    (well ? pipe.shaken_hands : pipe.handshake_fails) = true;
    pipe.moved.cancel();
}

void MemoryTransport::End(Pipe& pipe) {
    if (!pipe.stands) return Crash(pipe);
    pipe.server_ended = true;
    pipe.moved.cancel();
}

void MemoryTransport::Crash(Pipe& pipe) {
    pipe.server_crashed = true;
    pipe.moved.cancel();
    connecting_.cancel();
}

void MemoryTransport::GoAway() {
    away_ = true;
    for (const auto& pipe : {control_, data_})
        if (pipe && !Gone(*pipe)) End(*pipe);
}

}  // namespace fuzz
