#include <linux/sockios.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <sys/socket.h>

#include <cerrno>
#include <csignal>

#include "ftp/engine/net/socket_calls.h"
#include "ftp/engine/net/stream.h"

namespace ftp {
namespace {

using asio::ip::tcp;

asio::error_code SystemError(int number) {
    return {number, asio::system_category()};
}

void SetTcpOption(tcp::socket& socket, int option, int value) {
    ::setsockopt(socket.native_handle(), IPPROTO_TCP, option, &value, sizeof value);
}

}  // namespace

asio::error_code StartConnecting(tcp::socket& socket, const tcp::endpoint& to) {
    const int outcome = ::connect(socket.native_handle(), to.data(), static_cast<socklen_t>(to.size()));
    return outcome == 0 || errno == EINPROGRESS ? asio::error_code() : SystemError(errno);
}

asio::error_code OutcomeOfConnecting(tcp::socket& socket) {
    int refused = 0;
    socklen_t size = sizeof refused;
    const bool told = ::getsockopt(socket.native_handle(), SOL_SOCKET, SO_ERROR, &refused, &size) == 0;
    return told ? SystemError(refused) : asio::error_code();
}

void LimitUnsent(tcp::socket& socket, int bytes) {
    SetTcpOption(socket, TCP_NOTSENT_LOWAT, bytes);
}

void AcknowledgeNow(tcp::socket& socket) {
    SetTcpOption(socket, TCP_QUICKACK, 1);
}

std::size_t Unacknowledged(tcp::socket& socket) {
    int bytes = 0;
    return ::ioctl(socket.native_handle(), SIOCOUTQ, &bytes) == 0 ? static_cast<std::size_t>(bytes) : 0;
}

std::size_t SendFromFile(tcp::socket& socket, int file, std::size_t limit, asio::error_code& error) {
    const ssize_t sent = ::sendfile(socket.native_handle(), file, nullptr, limit);
    if (sent >= 0) {
        error.clear();
        return static_cast<std::size_t>(sent);
    }
    error = FailureOfSending(errno);
    return 0;
}

// Asio's category does not know that EIO is the io_error of the standard.
asio::error_code FailureOfSending(int number) {
    switch (number) {
        case EAGAIN:
        case EINTR:
            return asio::error::would_block;
        case EINVAL:
        case ENOSYS:
            return asio::error::operation_not_supported;
        case EIO:
            return std::make_error_code(std::errc::io_error);
        default:
            return SystemError(number);
    }
}

void BlockBrokenPipeSignal() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

}  // namespace ftp
