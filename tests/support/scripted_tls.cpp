#include "tests/support/scripted_tls.h"

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <poll.h>

#include <cerrno>
#include <csignal>
#include <stdexcept>

namespace ftp_test {

void ServerTls::Free::operator()(ssl_st* tls) const {
    SSL_free(tls);
}

ServerTls::ServerTls(ssl_ctx_st* context, int descriptor) : tls_(SSL_new(context)) {
    SSL_set_fd(tls_.get(), descriptor);
    SSL_set_accept_state(tls_.get());
}

int ServerTls::Handshake() {
    ERR_clear_error();
    const int result = SSL_do_handshake(tls_.get());
    if (result == 1) return 0;
    switch (SSL_get_error(tls_.get(), result)) {
        case SSL_ERROR_WANT_READ:
            return POLLIN;
        case SSL_ERROR_WANT_WRITE:
            return POLLOUT;
        default:
            return -1;
    }
}

ssize_t ServerTls::Outcome(int result) const {
    if (result > 0) return result;
    const int error = SSL_get_error(tls_.get(), result);
    if (error == SSL_ERROR_ZERO_RETURN) return 0;
    errno = error == SSL_ERROR_WANT_READ || error == SSL_ERROR_WANT_WRITE ? EAGAIN : ECONNRESET;
    return -1;
}

ssize_t ServerTls::Receive(char* into, std::size_t size) {
    ERR_clear_error();
    return Outcome(SSL_read(tls_.get(), into, static_cast<int>(size)));
}

ssize_t ServerTls::Send(const char* from, std::size_t size) {
    ERR_clear_error();
    return Outcome(SSL_write(tls_.get(), from, static_cast<int>(size)));
}

void ServerTls::SayGoodbye() {
    ERR_clear_error();
    if (tls_) SSL_shutdown(tls_.get());
}

TlsIdentity::TlsIdentity(const std::filesystem::path& certificate, const std::filesystem::path& key)
    : context_(SSL_CTX_new(TLS_server_method()), SSL_CTX_free) {
    signal(SIGPIPE, SIG_IGN);  // OpenSSL writes to sockets as to files
    SSL_CTX* const context = context_.get();
    SSL_CTX_set_mode(context, SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
    SSL_CTX_set_session_id_context(context, reinterpret_cast<const unsigned char*>("scripted"), 8);
    if (SSL_CTX_use_certificate_chain_file(context, certificate.c_str()) != 1 ||
        SSL_CTX_use_PrivateKey_file(context, key.c_str(), SSL_FILETYPE_PEM) != 1)
        throw std::runtime_error("no certificate in " + certificate.native());
}

}  // namespace ftp_test
