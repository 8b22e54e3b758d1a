#pragma once
// The server's side of TLS, over sockets that do not block.

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <memory>

struct ssl_st;
struct ssl_ctx_st;

namespace ftp_test {

/// One connection's; must not outlive its socket's descriptor.
class ServerTls {
 public:
    ServerTls() = default;
    ServerTls(ssl_ctx_st* context, int descriptor);
    explicit operator bool() const { return tls_ != nullptr; }

    /// What poll has to wait for before the next attempt; 0 when it is done; -1 when it has failed.
    int Handshake();
    /// As recv and send.
    ssize_t Receive(char* into, std::size_t size);
    ssize_t Send(const char* from, std::size_t size);
    /// close_notify: what has come so far is all.
    void SayGoodbye();
    void Forget() { tls_.reset(); }

 private:
    ssize_t Outcome(int result) const;

    struct Free {
        void operator()(ssl_st* tls) const;
    };
    std::unique_ptr<ssl_st, Free> tls_;
};

/// What all connections of a server have in common.
class TlsIdentity {
 public:
    /// PEM files. Throws std::runtime_error.
    TlsIdentity(const std::filesystem::path& certificate, const std::filesystem::path& key);
    ServerTls Accept(int descriptor) const { return {context_.get(), descriptor}; }

 private:
    std::shared_ptr<ssl_ctx_st> context_;
};

}  // namespace ftp_test
