#pragma once
// Owners of descriptors, for the scripted server.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <system_error>
#include <utility>

namespace ftp_test {

/// An IPv4 or IPv6 address with a port.
struct Endpoint {
    sockaddr_storage storage{};
    socklen_t size = sizeof storage;

    Endpoint() = default;
    Endpoint(const std::string& address, std::uint16_t port) {
        if (inet_pton(AF_INET6, address.c_str(), &V6().sin6_addr) == 1) {
            storage.ss_family = AF_INET6;
            size = sizeof(sockaddr_in6);
        } else {
            storage = {};
            inet_pton(AF_INET, address.c_str(), &V4().sin_addr);
            storage.ss_family = AF_INET;
            size = sizeof(sockaddr_in);
        }
        SetPort(port);
    }
    bool IsV6() const { return storage.ss_family == AF_INET6; }
    std::uint16_t Port() const { return ntohs(reinterpret_cast<const sockaddr_in&>(storage).sin_port); }
    /// The port lies at the same place in both kinds of address.
    void SetPort(std::uint16_t port) { V4().sin_port = htons(port); }
    sockaddr* Get() { return reinterpret_cast<sockaddr*>(&storage); }

 private:
    sockaddr_in& V4() { return reinterpret_cast<sockaddr_in&>(storage); }
    sockaddr_in6& V6() { return reinterpret_cast<sockaddr_in6&>(storage); }
};

/// A descriptor with one owner; -1 when there is none.
class Descriptor {
 public:
    explicit Descriptor(int number = -1) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor() { Close(); }

    int Get() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }
    void Close() {
        if (number_ >= 0) close(std::exchange(number_, -1));
    }

 private:
    int number_;
};

class Socket : public Descriptor {
 public:
    using Descriptor::Descriptor;

    /// Listens on a free port of the address.
    static Socket Listening(Endpoint at, int backlog) {
        Socket made(socket(at.storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        if (!made || bind(made.Get(), at.Get(), at.size) != 0 || listen(made.Get(), backlog) != 0)
            throw std::system_error(errno, std::generic_category(), "listening on loopback");
        return made;
    }
    /// Begins to connect; the socket becomes writable when that is done.
    static Socket Connecting(Endpoint to) {
        Socket made(socket(to.storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        (void)connect(made.Get(), to.Get(), to.size);
        return made;
    }
    Socket Accept() const { return Socket(accept4(Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK)); }

    Endpoint Local() const {
        Endpoint name;
        getsockname(Get(), name.Get(), &name.size);
        return name;
    }
    /// Closes with a reset instead of in good order.
    void Abort() {
        const linger at_once{1, 0};
        setsockopt(Get(), SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
        Close();
    }
};

/// Something that poll can wait for. As a counting event each Raise lets one Take through.
class Event {
 public:
    explicit Event(bool counting) : descriptor_(eventfd(0, EFD_CLOEXEC | (counting ? EFD_SEMAPHORE : 0))) {}
    int Get() const { return descriptor_.Get(); }
    void Raise() const { eventfd_write(Get(), 1); }
    void Take() const {
        eventfd_t value;
        eventfd_read(Get(), &value);
    }

 private:
    Descriptor descriptor_;
};

}  // namespace ftp_test
