#include "tests/support/line_client.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <system_error>

namespace ftp_test {

LineClient::LineClient(const std::string& address, std::uint16_t port) {
    const bool ipv6 = address.find(':') != std::string::npos;
    sockaddr_in v4{};
    sockaddr_in6 v6{};
    v4.sin_family = AF_INET;
    v6.sin6_family = AF_INET6;
    v4.sin_port = v6.sin6_port = htons(port);
    inet_pton(AF_INET, address.c_str(), &v4.sin_addr);
    inet_pton(AF_INET6, address.c_str(), &v6.sin6_addr);
    socket_ = socket(ipv6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const timeval patience{30, 0};  // a peer that says nothing is a failed test, not a hung one
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    const int result = ipv6 ? connect(socket_, reinterpret_cast<sockaddr*>(&v6), sizeof v6)
                            : connect(socket_, reinterpret_cast<sockaddr*>(&v4), sizeof v4);
    if (result == 0) return;
    const std::system_error error(errno, std::generic_category(), address + ":" + std::to_string(port));
    close(socket_);
    throw error;
}

LineClient::~LineClient() {
    close(socket_);
}

void LineClient::Send(const std::string& bytes) {
    if (send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL) < 0) reset_ = true;
}

bool LineClient::Fill() {
    char bytes[4096];
    const ssize_t count = recv(socket_, bytes, sizeof bytes, 0);
    reset_ = reset_ || count < 0;
    if (count > 0) buffer_.append(bytes, static_cast<std::size_t>(count));
    return count > 0;
}

std::string LineClient::Line() {
    std::size_t end;
    while ((end = buffer_.find('\n')) == std::string::npos)
        if (!Fill()) return {};
    std::string line = buffer_.substr(0, end + 1);
    buffer_.erase(0, end + 1);
    if (line.size() > 1 && line[line.size() - 2] == '\r') line.erase(line.size() - 2, 1);
    return line;
}

std::string LineClient::Reply() {
    std::string line = Line(), reply = line;
    const std::string code = line.substr(0, 3);
    const bool several = line.size() > 3 && line[3] == '-';
    while (several && !line.empty() && line.substr(0, 4) != code + " ") reply += line = Line();
    return reply;
}

std::string LineClient::Rest() {
    while (Fill()) {
    }
    shutdown(socket_, SHUT_RDWR);  // some servers wait for the other side's close, too
    return std::move(buffer_);
}

}  // namespace ftp_test
