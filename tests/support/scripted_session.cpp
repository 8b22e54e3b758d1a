#include "tests/support/scripted_session.h"

#include <netinet/tcp.h>
#include <poll.h>

#include <algorithm>
#include <array>

namespace ftp_test {
namespace {

/// Without the Telnet signals that may stand before an ABOR; a doubled 0xFF is one of a name.
std::string WithoutTelnet(const std::string& line) {
    if (line.ends_with("ABOR")) return "ABOR";
    std::string bytes;
    for (std::size_t i = 0; i < line.size(); ++i) {
        bytes += line[i];
        if (line[i] == '\xFF') ++i;
    }
    return bytes;
}

void ReplaceAll(std::string& text, const std::string& mark, const std::string& value) {
    for (std::size_t at; (at = text.find(mark)) != std::string::npos;) text.replace(at, mark.size(), value);
}

}  // namespace

ScriptedSession::ScriptedSession(ScriptedWorld& world, Socket control)
    : world_(world), control_(std::move(control)) {
    const int on = 1;
    setsockopt(control_.Get(), SOL_SOCKET, SO_OOBINLINE, &on, sizeof on);
    setsockopt(control_.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

void ScriptedSession::Run() {
    if (Obey(kConnect) == Next::End) return;
    while (const auto command = ReadCommand())
        if (Obey(*command) == Next::End) return;
}

Next ScriptedSession::Obey(const std::string& command) {
    const std::size_t space = std::min(command.find(' '), command.size());
    manner_ = nullptr;
    replies_ = 0;
    if (verb_ == "RETR" || verb_ == "STOR" || verb_ == "APPE") restart_ = 0;  // it held for that one
    verb_ = command.substr(0, space);
    argument_ = command.substr(std::min(space + 1, command.size()));
    for (const Step& step : world_.Record(command))
        if (const Next next = step(*this); next != Next::Go) return next;
    return Next::Go;
}

// --- waiting ---

std::optional<std::string> ScriptedSession::ReadCommand() {
    std::size_t end;
    while ((end = input_.find('\n')) == std::string::npos) {
        pollfd polls[] = {{control_.Get(), POLLIN, 0}, {world_.stop.Get(), POLLIN, 0}};
        poll(polls, 2, -1);
        if (polls[1].revents || !ReadControl()) return std::nullopt;
    }
    std::string line = input_.substr(0, end);
    input_.erase(0, end + 1);
    if (line.ends_with('\r')) line.pop_back();
    return WithoutTelnet(line);
}

bool ScriptedSession::ReadControl() {
    std::array<char, 4096> bytes;
    ssize_t count;
    do {
        count = Receive(control_, bytes.data(), bytes.size());
        if (count > 0) input_.append(bytes.data(), static_cast<std::size_t>(count));
    } while (count > 0 && control_tls_);  // what is decrypted already wakes nobody
    return count > 0 || (count < 0 && errno == EAGAIN);
}

ssize_t ScriptedSession::Receive(const Socket& socket, char* into, std::size_t size) {
    ServerTls& tls = TlsOf(socket);
    return tls ? tls.Receive(into, size) : recv(socket.Get(), into, size, 0);
}

ssize_t ScriptedSession::Send(const Socket& socket, const char* from, std::size_t size) {
    ServerTls& tls = TlsOf(socket);
    return tls ? tls.Send(from, size) : send(socket.Get(), from, size, MSG_NOSIGNAL);
}

Next ScriptedSession::Handshake(const Socket& socket, const TlsIdentity& identity) {
    ServerTls& tls = TlsOf(socket) = identity.Accept(socket.Get());
    for (int events; (events = tls.Handshake()) != 0;) {
        if (events < 0) return Next::End;
        pollfd polls[] = {{world_.stop.Get(), POLLIN, 0}, {socket.Get(), static_cast<short>(events), 0}};
        poll(polls, 2, -1);
        if (polls[0].revents) return Next::End;
    }
    return Next::Go;
}

Next ScriptedSession::StartTls() {
    const auto identity = world_.Identity();
    return identity ? Handshake(control_, *identity) : Next::End;
}

Next ScriptedSession::SendPlain(const std::string& bytes) {
    ServerTls tls = std::exchange(control_tls_, ServerTls());
    const Next next = Send(bytes);
    control_tls_ = std::move(tls);
    return next;
}

bool ScriptedSession::InterruptionWaits() const {
    // Other commands may well come early; they wait for their turn.
    return input_.find("ABOR\r\n") != std::string::npos || input_.find("QUIT\r\n") != std::string::npos;
}

Next ScriptedSession::Wait(int descriptor, short events, int timeout_ms) {
    while (!InterruptionWaits()) {
        pollfd polls[] = {
            {world_.stop.Get(), POLLIN, 0}, {control_.Get(), POLLIN, 0}, {descriptor, events, 0}};
        const int ready = poll(polls, 3, timeout_ms);
        if (polls[0].revents) return Next::End;
        if (polls[1].revents && !ReadControl()) return Next::End;
        if (polls[2].revents || ready == 0) return Next::Go;
    }
    in_transfer_ = true;
    return Next::Interrupted;
}

Next ScriptedSession::Pause(std::chrono::milliseconds duration) {
    return Wait(-1, 0, static_cast<int>(duration.count()));
}

Next ScriptedSession::Hold() {
    const Next next = Wait(world_.released.Get(), POLLIN);
    if (next == Next::Go) world_.released.Take();
    return next;
}

Next ScriptedSession::Stall() {
    return Wait(-1, 0);
}

Next ScriptedSession::Behave(Manner manner, int which) {
    manner_ = std::move(manner);
    manner_at_ = which;
    return Next::Go;
}

Next ScriptedSession::Raw(const std::string& bytes) {
    ++replies_;
    const bool special = manner_ && (manner_at_ == 0 || manner_at_ == replies_);
    return special ? manner_(*this, bytes) : Send(bytes);
}

Next ScriptedSession::Write(const Socket& socket, const std::string& bytes) {
    for (std::size_t sent = 0; sent < bytes.size();) {
        const ssize_t count = Send(socket, bytes.data() + sent, bytes.size() - sent);
        if (count >= 0) {
            sent += static_cast<std::size_t>(count);
        } else if (errno != EAGAIN) {
            if (&socket == &control_) return Next::End;
            data_stands_ = false;  // the client has closed it
            return Next::Go;
        } else if (const Next next = Wait(socket.Get(), POLLOUT); next != Next::Go) {
            return next;
        }
    }
    return Next::Go;
}

// --- the connections ---

Next ScriptedSession::Close() {
    control_tls_.SayGoodbye();
    control_.Close();
    return Next::End;
}

Next ScriptedSession::Reset() {
    data_.Abort();
    control_.Abort();
    return Next::End;
}

std::string ScriptedSession::WithPorts(std::string line) const {
    if (!listener_) return line;
    const int port = listener_.Local().Port();
    ReplaceAll(line, "%p", std::to_string(port));
    ReplaceAll(line, "%P", std::to_string(port / 256) + "," + std::to_string(port % 256));
    return line;
}

Next ScriptedSession::ListenData(int backlog) {
    Endpoint at = control_.Local();
    at.SetPort(0);
    active_.reset();
    DropData();
    listener_ = Socket::Listening(at, backlog);
    return Next::Go;
}

Next ScriptedSession::RefuseData() {
    ListenData();
    shutdown(listener_.Get(), SHUT_RDWR);  // keeps the port, but no longer listens there
    return Next::Go;
}

Next ScriptedSession::BlockData() {
    ListenData(0);
    blocker_ = Socket::Connecting(listener_.Local());  // fills the queue: the kernel lets nobody else in
    return Next::Go;
}

Next ScriptedSession::OpenData() {
    if (data_) return Next::Go;
    data_stands_ = true;
    if (active_) data_ = Socket::Connecting(*active_);
    const Next next = active_ ? Wait(data_.Get(), POLLOUT) : Wait(listener_.Get(), POLLIN);
    if (next == Next::Go && !active_) data_ = listener_.Accept();
    const auto identity = world_.Identity();
    if (next != Next::Go || !data_ || !identity || !protects_data_ || std::exchange(plain_data_, false))
        return next;
    if (Handshake(data_, *identity) != Next::Go) DropData();
    return next;
}

Next ScriptedSession::SendData(const std::string& bytes) {
    const Next next = OpenData();
    return next == Next::Go ? Write(data_, bytes) : next;
}

Next ScriptedSession::SendFile(std::size_t bytes) {
    const std::string file = world_.File(argument_).value_or(std::string());
    const std::string piece = file.substr(std::min(restart_, file.size()), bytes);
    restart_ += piece.size();
    return SendData(piece);
}

Next ScriptedSession::KeepData(std::size_t bytes) {
    std::string kept = world_.File(argument_).value_or(std::string());
    if (verb_ == "STOR") kept.resize(std::min(kept.size(), restart_));
    const Next next = TakeData(bytes, &kept);
    restart_ = kept.size();
    world_.SetFile(argument_, kept);
    return next;
}

Next ScriptedSession::TakeData(std::size_t bytes, std::string* taken) {
    Next next = OpenData();
    std::array<char, 65536> buffer;
    while (next == Next::Go && bytes > 0) {
        if ((next = Wait(data_.Get(), POLLIN)) != Next::Go) break;
        const ssize_t count = Receive(data_, buffer.data(), std::min(bytes, buffer.size()));
        if (count < 0 && errno == EAGAIN) continue;
        if (count <= 0) break;
        bytes -= static_cast<std::size_t>(count);
        if (taken) taken->append(buffer.data(), static_cast<std::size_t>(count));
    }
    return next;
}

Next ScriptedSession::PlainData() {
    plain_data_ = true;
    return Next::Go;
}

Next ScriptedSession::DropData() {
    data_tls_.Forget();
    data_.Close();
    return Next::Go;
}

Next ScriptedSession::CloseData() {
    data_tls_.SayGoodbye();
    DropData();
    listener_.Close();
    return Next::Go;
}

Next ScriptedSession::ResetData() {
    const Next next = OpenData();
    data_tls_.Forget();
    data_.Abort();
    listener_.Close();
    return next;
}

}  // namespace ftp_test
