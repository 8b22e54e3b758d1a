#include "platform/desktop_bus.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QDBusConnection>
#include <QFile>
#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

namespace platform {
namespace {

using std::chrono::steady_clock;

constexpr int kLookInterval = 30;  // milliseconds

/// The name of the socket of a "unix:" address as the system takes it, or nothing.
std::optional<QByteArray> SocketName(const QString& address) {
    if (!address.startsWith(QStringLiteral("unix:"))) return std::nullopt;
    for (const QString& part : address.mid(5).split(u',')) {
        const QByteArray value = QByteArray::fromPercentEncoding(part.section(u'=', 1).toUtf8());
        if (part.startsWith(QStringLiteral("path="))) return value;
        if (part.startsWith(QStringLiteral("abstract="))) return '\0' + value;
    }
    return std::nullopt;
}

bool Wait(int socket, short events, steady_clock::time_point deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - steady_clock::now());
    pollfd wanted{socket, events, 0};
    return left.count() > 0 && poll(&wanted, 1, static_cast<int>(left.count())) == 1;
}

bool Connect(int socket, const QByteArray& name) {
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    if (name.isEmpty() || static_cast<std::size_t>(name.size()) >= sizeof place.sun_path) return false;
    std::memcpy(place.sun_path, name.constData(), static_cast<std::size_t>(name.size()));
    const auto length =
        static_cast<socklen_t>(offsetof(sockaddr_un, sun_path)) + static_cast<socklen_t>(name.size());
    return connect(socket, reinterpret_cast<const sockaddr*>(&place), length) == 0;
}

// The first words of every conversation with a bus: who we are, and that we are welcome.
bool Introduce(int socket, steady_clock::time_point deadline) {
    const QByteArray words =
        '\0' + QByteArray("AUTH EXTERNAL ") + QByteArray::number(getuid()).toHex() + "\r\n";
    if (send(socket, words.constData(), static_cast<std::size_t>(words.size()), MSG_NOSIGNAL) != words.size())
        return false;
    char answer[2] = {};
    return Wait(socket, POLLIN, deadline) && recv(socket, answer, sizeof answer, 0) == sizeof answer &&
           std::memcmp(answer, "OK", sizeof answer) == 0;
}

// The library waits for a bus much longer, on a thread that the end of the program has to wait for.
bool Answers(const QByteArray& name, std::chrono::milliseconds patience) {
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (socket < 0) return false;
    const bool answers = Connect(socket, name) && Introduce(socket, steady_clock::now() + patience);
    close(socket);
    return answers;
}

}  // namespace

std::optional<QString> SessionBusAddress() {
    const QString stated = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    for (const QString& address : stated.split(u';'))
        if (SocketName(address)) return address;
    if (!stated.isEmpty() || !qEnvironmentVariableIsSet("XDG_RUNTIME_DIR")) return std::nullopt;
    const QString usual = qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus");
    return QFile::exists(usual) ? std::optional(QStringLiteral("unix:path=") + usual) : std::nullopt;
}

DesktopBus::~DesktopBus() {
    if (state_ == State::Open) QDBusConnection::disconnectFromBus(name_);
}

void DesktopBus::Open(const std::optional<QString>& address) {
    if (state_ != State::Closed) return;
    const auto socket = address ? SocketName(*address) : std::nullopt;
    state_ = socket ? State::Opening : State::None;
    if (!socket) return;
    static int connections = 0;
    name_ = QStringLiteral("websmide_desktop_%1").arg(++connections);
    attempt_ = std::make_shared<std::atomic<State>>(State::Opening);
    std::thread([attempt = attempt_, socket = *socket, address = *address, name = name_,
                 patience = patience] {
        const bool open =
            Answers(socket, patience) && QDBusConnection::connectToBus(address, name).isConnected();
        *attempt = open ? State::Open : State::None;
    }).detach();
    connect(&look_, &QTimer::timeout, this, &DesktopBus::Look);
    look_.start(kLookInterval);
}

void DesktopBus::Look() {
    state_ = *attempt_;
    if (state_ == State::Opening) return;
    look_.stop();
    if (state_ == State::Open) Q_EMIT Opened();
}

}  // namespace platform
