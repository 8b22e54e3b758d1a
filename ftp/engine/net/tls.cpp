#include "ftp/engine/net/tls.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <algorithm>
#include <asio/ip/address.hpp>
#include <cstring>
#include <deque>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "ftp/engine/net/tls_certificate.h"

namespace ftp {
namespace {

template <auto kFree>
struct Freed {
    template <class T>
    void operator()(T* object) const {
        kFree(object);
    }
};
using Context = std::unique_ptr<SSL_CTX, Freed<SSL_CTX_free>>;
using Tls = std::unique_ptr<SSL, Freed<SSL_free>>;
using TlsSession = std::unique_ptr<SSL_SESSION, Freed<SSL_SESSION_free>>;
using Method = std::unique_ptr<BIO_METHOD, Freed<BIO_meth_free>>;

constexpr std::size_t kControlBuffer = 20 * 1024;  // a record and its overhead
constexpr std::size_t kPiece = 64 * 1024;          // of a file: on a slow line, too, it is soon gone
constexpr std::size_t kMostTickets = 8;
constexpr int kMostRounds = 4;
constexpr std::size_t kDataBuffer = 256 * 1024;  // one system call for many records

/// "fe80::1%eth0" and "host." are the same to a certificate as without what follows.
std::string WithoutZone(std::string host) {
    host.resize(std::min(host.find('%'), host.size()));
    if (host.ends_with('.')) host.pop_back();
    return host;
}

/// What went wrong last, in OpenSSL's words.
Failure LastFailure() {
    const char* reason = ERR_reason_error_string(ERR_peek_error());
    ERR_clear_error();
    return Failure{FailureKind::TlsFailed, 0, reason ? reason : ""};
}

}  // namespace

class TlsStream;

namespace {

BIO_METHOD* StreamMethod();

}  // namespace

struct TlsClient::Shared {
    Shared();
    void Keep(SSL_SESSION* session);
    TlsSession SessionToResume();

    Context context;
    std::string host;         // that the control connection is to
    std::string fingerprint;  // of its certificate

    // With TLS 1.3 a session is a ticket: two come with the control connection, and one with most data
    // connections. A ticket is to serve once, and some servers insist; the last one is used again only where
    // there is no other, as after uploads to proftpd, which bring none.
    std::deque<TlsSession> unused;
    TlsSession last;
};

/// One connection. OpenSSL works on memory, and the stream below moves the bytes: so whatever makes streams
/// can be protected, and many records go out and in with one system call.
class TlsStream : public SecureStream {
 public:
    TlsStream(TlsClient::Shared& shared, std::unique_ptr<Stream> plain, bool control)
        : shared_(shared),
          plain_(std::move(plain)),
          tls_(SSL_new(shared.context.get())),
          control_(control),
          size_(control ? kControlBuffer : kDataBuffer),
          incoming_(std::make_unique_for_overwrite<char[]>(size_)) {
        BIO* const bytes = BIO_new(StreamMethod());
        BIO_set_data(bytes, this);
        BIO_set_init(bytes, 1);
        SSL_set_bio(tls_.get(), bytes, bytes);
        SSL_set_connect_state(tls_.get());
        SSL_set_app_data(tls_.get(), this);
        NameHost();
        if (control_) return;
        SSL_set_verify(tls_.get(), SSL_VERIFY_NONE, nullptr);  // its certificate is compared instead
        if (const TlsSession session = shared_.SessionToResume()) SSL_set_session(tls_.get(), session.get());
    }

    /// Without this OpenSSL would hold the session for broken, and not resume it for other connections.
    ~TlsStream() override { SSL_set_shutdown(tls_.get(), SSL_SENT_SHUTDOWN | SSL_RECEIVED_SHUTDOWN); }

    Task<> Connected() override {
        bool stands = false;
        for (;;) {
            ERR_clear_error();  // the first hello is made while the connection is still on its way
            const int done = SSL_do_handshake(tls_.get());
            const int error = SSL_get_error(tls_.get(), done);
            const Failure failure = done == 1 ? Failure{} : LastFailure();
            if (!std::exchange(stands, true)) {
                const auto connected = co_await plain_->Connected();
                if (!connected) co_return connected;
            }
            const auto flushed = co_await Flush();  // an alert, too, says why
            if (done == 1) break;
            if (error != SSL_ERROR_WANT_READ) co_return Fail(failure);
            if (!flushed) co_return flushed;
            const auto got = co_await Fetch();
            if (!got) co_return Fail(got.error());
            if (*got == 0) co_return Fail(FailureKind::ConnectionLost);
        }
        co_return SeePeer();
    }

    Task<std::size_t> Read(asio::mutable_buffer into) override {
        for (;;) {
            const std::size_t got = Decrypt(into);
            if (got > 0) co_return got;
            if (broken_) co_return Fail(*broken_);
            if (ended_) co_return 0;
            const auto answered = co_await Flush();  // the peer may ask for new keys
            if (!answered) co_return Fail(answered.error());
            const auto fetched = co_await Fetch();
            if (!fetched) co_return Fail(fetched.error());
            if (*fetched == 0) co_return Fail(FailureKind::CutShort);
        }
    }

    Task<> Write(asio::const_buffer bytes) override {
        if (const auto encrypted = Encrypt(bytes); !encrypted) co_return encrypted;
        co_return co_await Flush();
    }

    Task<std::size_t> Send(SourceFile& file, std::size_t limit) override {
        if (!clear_) clear_ = std::make_unique_for_overwrite<char[]>(kPiece);
        const auto got = file.Read({clear_.get(), std::min(limit, kPiece)});
        if (!got) co_return Fail(got.error());
        const auto written = co_await Write(asio::buffer(clear_.get(), *got));
        if (!written) co_return Fail(written.error());
        co_return *got;
    }

    std::size_t Unsent() const override { return plain_->Unsent() + outgoing_.size(); }

    Task<> EndWriting() override {
        SSL_shutdown(tls_.get());  // close_notify
        const auto flushed = co_await Flush();
        if (!flushed) co_return flushed;
        co_return co_await plain_->EndWriting();
    }

    void Close() override {
        TakeTickets();
        plain_->Close();
    }
    void Reset() override {
        TakeTickets();
        plain_->Reset();
    }

    const Certificate& PeerCertificate() const override { return certificate_; }
    std::string Version() const override { return SSL_get_version(tls_.get()); }

    // What OpenSSL reads and writes.
    int Take(char* into, int size) {
        const std::size_t count = std::min(static_cast<std::size_t>(size), fetched_ - taken_);
        std::memcpy(into, incoming_.get() + taken_, count);
        taken_ += count;
        return static_cast<int>(count);
    }
    void Put(const char* bytes, int size) { outgoing_.insert(outgoing_.end(), bytes, bytes + size); }

    void NoteFault(int error) { faults_.push_back(error); }
    /// A session for the next data connections. Only from somebody who has shown who he is.
    bool KeepSession(SSL_SESSION* session) {
        if (!control_ && !seen_) return false;
        shared_.Keep(session);
        return true;
    }

 private:
    /// Says to the server which host is meant, and to the verification which one it has to be.
    void NameHost() {
        asio::error_code is_name;
        asio::ip::make_address(shared_.host, is_name);
        const char* const host = shared_.host.c_str();
        if (is_name) SSL_set_tlsext_host_name(tls_.get(), host);
        if (!control_) return;
        SSL_set_hostflags(tls_.get(), X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
        const int named = is_name ? SSL_set1_host(tls_.get(), host)
                                  : X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(tls_.get()), host);
        if (named != 1) NoteFault(X509_V_ERR_HOSTNAME_MISMATCH);  // nothing would be checked
    }

    /// The certificate of the control connection is read; that of a data connection has to be the same.
    Result<> SeePeer() {
        const std::unique_ptr<X509, Freed<X509_free>> peer(SSL_get1_peer_certificate(tls_.get()));
        if (!peer) return Fail(FailureKind::TlsFailed);
        if (control_) {
            certificate_ = ReadCertificate(peer.get());
            for (const int fault : faults_) AddFault(certificate_, fault);
            shared_.fingerprint = certificate_.fingerprint;
        } else if (FingerprintOf(peer.get()) != shared_.fingerprint) {
            return Fail(FailureKind::TlsFailed, "another certificate on the data connection");
        }
        seen_ = true;
        return {};
    }

    /// An upload reads nothing, but its connection has brought a ticket for one to come.
    void TakeTickets() {
        if (control_ || !seen_ || std::exchange(closed_, true)) return;
        char nothing = 0;
        for (int rounds = 0; rounds < kMostRounds && taken_ == fetched_; ++rounds) {
            taken_ = 0;
            fetched_ = plain_->ReadAtOnce(Incoming());
            if (fetched_ > 0) Decrypt(asio::buffer(&nothing, 1));
        }
    }

    /// As much as is here. What comes behind it is kept: OpenSSL tells it once only.
    std::size_t Decrypt(asio::mutable_buffer into) {
        std::size_t total = 0;
        while (total < into.size() && !broken_ && !ended_) {
            ERR_clear_error();
            std::size_t got = 0;
            auto* const place = static_cast<char*>(into.data()) + total;
            const int done = SSL_read_ex(tls_.get(), place, into.size() - total, &got);
            total += got;
            if (done == 1) continue;
            const int error = SSL_get_error(tls_.get(), done);
            if (error == SSL_ERROR_WANT_READ) break;
            ended_ = error == SSL_ERROR_ZERO_RETURN;
            if (!ended_) broken_ = LastFailure();
        }
        return total;
    }

    Result<> Encrypt(asio::const_buffer bytes) {
        if (bytes.size() == 0) return {};
        ERR_clear_error();
        std::size_t written = 0;
        if (SSL_write_ex(tls_.get(), bytes.data(), bytes.size(), &written) != 1) return Fail(LastFailure());
        return {};
    }

    /// Sends what is encrypted. Where the other direction is at it already, it takes this along.
    Task<> Flush() {
        if (flushing_) co_return Result<>{};
        flushing_ = true;
        Result<> outcome;
        while (outcome && !outgoing_.empty()) {
            sending_.swap(outgoing_);
            outcome = co_await plain_->Write(asio::buffer(sending_));
            sending_.clear();
        }
        flushing_ = false;
        co_return outcome;
    }

    asio::mutable_buffer Incoming() const { return asio::buffer(incoming_.get(), size_); }

    /// The next bytes from the peer; all that came before have been taken.
    Task<std::size_t> Fetch() {
        taken_ = fetched_ = 0;
        const auto got = co_await plain_->Read(Incoming());
        if (got) fetched_ = *got;
        co_return got;
    }

    TlsClient::Shared& shared_;
    std::unique_ptr<Stream> plain_;
    Tls tls_;
    const bool control_;
    bool seen_ = false;  // the peer's certificate
    bool closed_ = false;
    bool ended_ = false;             // close_notify has come
    std::optional<Failure> broken_;  // what came is not TLS, or an alert
    bool flushing_ = false;
    Certificate certificate_;
    std::vector<int> faults_;  // of the certificate, as the verification has found them
    const std::size_t size_;
    std::unique_ptr<char[]> incoming_;  // from the peer; taken_ to fetched_ is still to be decrypted
    std::size_t taken_ = 0, fetched_ = 0;
    std::vector<char> outgoing_, sending_;  // to the peer: to be sent, and being sent
    std::unique_ptr<char[]> clear_;         // a piece of a file, to be encrypted
};

namespace {

TlsStream& StreamOf(BIO* bytes) {
    return *static_cast<TlsStream*>(BIO_get_data(bytes));
}

int ReadBytes(BIO* bytes, char* into, int size) {
    BIO_clear_retry_flags(bytes);
    const int got = StreamOf(bytes).Take(into, size);
    if (got > 0) return got;
    BIO_set_retry_read(bytes);
    return -1;
}

int WriteBytes(BIO* bytes, const char* from, int size) {
    StreamOf(bytes).Put(from, size);
    return size;
}

long ControlBytes(BIO*, int command, long, void*) {
    return command == BIO_CTRL_FLUSH ? 1 : 0;
}

/// For the whole process: OpenSSL has few kinds to give.
BIO_METHOD* StreamMethod() {
    static const Method method = [] {
        Method made(BIO_meth_new(BIO_get_new_index() | BIO_TYPE_SOURCE_SINK, "stream"));
        BIO_meth_set_read(made.get(), ReadBytes);
        BIO_meth_set_write(made.get(), WriteBytes);
        BIO_meth_set_ctrl(made.get(), ControlBytes);
        return made;
    }();
    return method.get();
}

/// What is wrong with the certificate is noted, and the handshake goes on.
int NoteFault(int passed, X509_STORE_CTX* store) {
    if (passed == 1) return 1;
    auto* const tls =
        static_cast<SSL*>(X509_STORE_CTX_get_ex_data(store, SSL_get_ex_data_X509_STORE_CTX_idx()));
    static_cast<TlsStream*>(SSL_get_app_data(tls))->NoteFault(X509_STORE_CTX_get_error(store));
    return 1;
}

int NoteSession(SSL* tls, SSL_SESSION* session) {
    return static_cast<TlsStream*>(SSL_get_app_data(tls))->KeepSession(session) ? 1 : 0;
}

}  // namespace

TlsClient::Shared::Shared() : context(SSL_CTX_new(TLS_client_method())) {
    SSL_CTX* const tls = context.get();
    SSL_CTX_set_min_proto_version(tls, TLS1_2_VERSION);
    SSL_CTX_set_options(tls, SSL_OP_NO_RENEGOTIATION);
    // OpenSSL sends a key share for the first group only. vsftpd and pure-ftpd take P-256 alone, and with
    // another share would ask again: a round trip for each connection.
    SSL_CTX_set1_groups_list(tls, "P-256:X25519:P-384:P-521");
    // The shorter key is the faster one, and is not what anybody breaks in by.
    SSL_CTX_set_ciphersuites(tls,
                             "TLS_AES_128_GCM_SHA256:TLS_AES_256_GCM_SHA384:TLS_CHACHA20_POLY1305_SHA256");
    SSL_CTX_set_cipher_list(tls, "ECDHE-ECDSA-AES128-GCM-SHA256:ECDHE-RSA-AES128-GCM-SHA256:DEFAULT");
    SSL_CTX_set_default_verify_paths(tls);
    SSL_CTX_set_verify(tls, SSL_VERIFY_PEER, NoteFault);
    SSL_CTX_set_session_cache_mode(tls, SSL_SESS_CACHE_CLIENT | SSL_SESS_CACHE_NO_INTERNAL);
    SSL_CTX_sess_set_new_cb(tls, NoteSession);
}

void TlsClient::Shared::Keep(SSL_SESSION* session) {
    unused.emplace_back(session);
    if (unused.size() > kMostTickets) unused.pop_front();
}

/// A copy: OpenSSL marks the one that is used as used up.
TlsSession TlsClient::Shared::SessionToResume() {
    if (!unused.empty()) {
        last = std::move(unused.back());  // the newest: it is valid longest
        unused.pop_back();
    }
    return last ? TlsSession(SSL_SESSION_dup(last.get())) : nullptr;
}

TlsClient::TlsClient() : shared_(std::make_unique<Shared>()) {}
TlsClient::~TlsClient() = default;

std::unique_ptr<SecureStream> TlsClient::SecureControl(std::unique_ptr<Stream> plain,
                                                       const std::string& host) {
    shared_->host = WithoutZone(host);
    shared_->unused.clear();
    shared_->last.reset();
    shared_->fingerprint.clear();
    return std::make_unique<TlsStream>(*shared_, std::move(plain), true);
}

std::unique_ptr<Stream> TlsClient::SecureData(std::unique_ptr<Stream> plain) {
    return std::make_unique<TlsStream>(*shared_, std::move(plain), false);
}

}  // namespace ftp
