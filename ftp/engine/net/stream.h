#pragma once
// Byte streams and where they come from. Sequences see only these interfaces: TCP, TLS and a test's script
// are the same to them. Worker's thread.

#include <asio/any_io_executor.hpp>
#include <asio/buffer.hpp>
#include <cstdint>
#include <memory>
#include <string>

#include "ftp/engine/net/local_files.h"
#include "ftp/engine/net/task.h"
#include "ftp/engine/wire/address.h"
#include "ftp/engine/wire/certificate.h"

namespace ftp {

/// One connection. At most one reader and one writer at a time.
class Stream {
 public:
    virtual ~Stream() = default;

    /// Waits until the connection stands. Streams are handed out as soon as their SYN has left.
    virtual Task<> Connected() = 0;
    /// Some bytes; 0 at the end of the stream. CutShort where the end is none that the peer has announced,
    /// and could have been made by anybody (TLS).
    virtual Task<std::size_t> Read(asio::mutable_buffer into) = 0;
    /// Bytes that are here already, without waiting; 0 when there are none. For TLS: what has come before the
    /// end of an upload.
    virtual std::size_t ReadAtOnce(asio::mutable_buffer) { return 0; }
    /// All of the bytes.
    virtual Task<> Write(asio::const_buffer bytes) = 0;
    /// Some bytes of the file from its position on, at most `limit`; 0 at the end of the file.
    virtual Task<std::size_t> Send(SourceFile& file, std::size_t limit) = 0;
    /// Bytes that were written here and that the peer has not acknowledged yet.
    virtual std::size_t Unsent() const = 0;
    /// Says that nothing more will be written; reading goes on.
    virtual Task<> EndWriting() = 0;
    /// Ends the connection; what waits on it ends as Cancelled. Twice is harmless.
    virtual void Close() = 0;
    /// Close, but so that the peer sees that something went wrong (RST) and not the orderly end of a file.
    virtual void Reset() = 0;
};

/// A connection that TLS protects, 1.2 or 1.3 (RFC 5246, RFC 8446). Connected() waits for the handshake, too:
/// TlsFailed when the two cannot agree. What is wrong with the certificate is for the caller to weigh, before
/// anything is written.
class SecureStream : public Stream {
 public:
    // After Connected():
    virtual const Certificate& PeerCertificate() const = 0;
    virtual std::string Version() const = 0;  // "TLSv1.3"
};

/// Waits for the one connection of an active transfer.
class Listener {
 public:
    virtual ~Listener() = default;
    virtual std::string Address() const = 0;  // numeric, as the control connection's own end
    virtual bool IsIpv6() const = 0;
    virtual std::uint16_t Port() const = 0;
    /// The connection, from the control connection's peer only; others are closed and waited past.
    virtual Task<std::unique_ptr<Stream>> Accept() = 0;
    virtual void Close() = 0;
};

/// Makes connections.
class Transport {
 public:
    virtual ~Transport() = default;
    virtual asio::any_io_executor Executor() = 0;

    /// The control connection: all addresses of the host in turn, a new one every 250 ms until one answers,
    /// so that a dead address does not hold the others up (RFC 8305).
    virtual Task<std::unique_ptr<Stream>> ConnectControl(HostAndPort where) = 0;
    /// The numeric address that ConnectControl has reached.
    virtual std::string PeerAddress() const = 0;
    /// Starts a connection to the control connection's peer; the SYN has left when this returns.
    virtual Result<std::unique_ptr<Stream>> StartData(std::uint16_t port) = 0;
    /// Listens on the control connection's own address.
    virtual Result<std::unique_ptr<Listener>> Listen() = 0;
    /// TLS over the control connection, to a peer that is to prove that it is `host`.
    virtual std::unique_ptr<SecureStream> SecureControl(std::unique_ptr<Stream> plain,
                                                        const std::string& host) = 0;
    /// TLS over a data connection. It resumes the TLS session of the control connection (servers insist on
    /// it), or its peer shows the same certificate: anything else is TlsFailed.
    virtual std::unique_ptr<Stream> SecureData(std::unique_ptr<Stream> plain) = 0;
    /// Ends a ConnectControl under way as Cancelled.
    virtual void CancelConnect() = 0;
};

/// TCP, on an executor of one thread.
std::unique_ptr<Transport> MakeTcpTransport(asio::any_io_executor executor);

/// For the thread that sends files: a peer that has gone is an error of the call, not a signal to the
/// process.
void BlockBrokenPipeSignal();

}  // namespace ftp
