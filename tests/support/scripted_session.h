#pragma once
// One client's session with a scripted server. Lives on a thread of its own.

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

#include "tests/support/scripted_tls.h"
#include "tests/support/scripted_world.h"
#include "tests/support/socket.h"

namespace ftp_test {

class ScriptedSession {
 public:
    ScriptedSession(ScriptedWorld& world, Socket control);
    /// Obeys commands until the client leaves, a script ends the session or the server goes.
    void Run();

    // What scripts are made of; see the steps of the same names.
    Next Proper();
    Next Say(const std::string& line) { return Raw(WithPorts(line) + "\r\n"); }
    /// A reply, in the manner that holds for it.
    Next Raw(const std::string& bytes);
    /// Just these bytes.
    Next Send(const std::string& bytes) { return Write(control_, bytes); }
    /// Past TLS.
    Next SendPlain(const std::string& bytes);
    Next StartTls();
    /// How the `which`-th reply to this command is sent, 0: each.
    Next Behave(Manner manner, int which);
    Next Pause(std::chrono::milliseconds duration);
    Next Hold();
    Next Stall();
    Next Close();
    Next Reset();
    Next ListenData(int backlog = 4);
    Next RefuseData();
    Next BlockData();
    Next OpenData();
    Next SendData(const std::string& bytes);
    /// Of the file asked for, from where the client wants to go on; what follows goes on behind it.
    Next SendFile(std::size_t bytes);
    /// Puts what it takes into the file that the client sends.
    Next KeepData(std::size_t bytes);
    /// False once the client has left the data connection.
    bool DataStands() const { return data_stands_; }
    Next TakeData(std::size_t bytes, std::string* taken = nullptr);
    Next CloseData();
    Next DropData();
    Next PlainData();
    Next ResetData();

 private:
    struct Proceedings;  // which command is answered how

    std::optional<std::string> ReadCommand();
    Next Obey(const std::string& command);
    /// Waits until `descriptor` is ready, -1: for nothing but an interruption. Reads what the client says
    /// meanwhile.
    Next Wait(int descriptor, short events, int timeout_ms = -1);
    bool ReadControl();
    ssize_t Receive(const Socket& socket, char* into, std::size_t size);
    ssize_t Send(const Socket& socket, const char* from, std::size_t size);
    ServerTls& TlsOf(const Socket& socket) { return &socket == &control_ ? control_tls_ : data_tls_; }
    Next Handshake(const Socket& socket, const TlsIdentity& identity);
    bool InterruptionWaits() const;
    Next Write(const Socket& socket, const std::string& bytes);
    std::string WithPorts(std::string line) const;
    Next Transfer(const std::string& bytes);

    // The proper answers.
    Next Feat();
    Next Port();
    Next Eprt();
    Next Epsv();
    Next Pasv();
    Next List();
    Next Retr();
    Next Rest();
    Next Auth();
    Next Prot();
    Next Stor();
    Next Size();
    Next Dele();
    Next Rnfr();
    Next Rnto();
    Next Mkd();
    Next Abor();
    Next Quit();

    ScriptedWorld& world_;
    Socket control_, listener_, data_, blocker_;
    ServerTls control_tls_, data_tls_;
    bool protects_data_ = false, plain_data_ = false;
    std::optional<Endpoint> active_;  // where PORT or EPRT told to connect
    std::string input_;               // received, not yet obeyed
    std::string verb_, argument_;     // of the command being obeyed
    std::string rename_from_;
    std::size_t restart_ = 0;  // where the next transfer begins
    Manner manner_;
    int manner_at_ = 0, replies_ = 0;
    bool data_stands_ = false;
    bool in_transfer_ = false;  // a transfer was broken off by the command that comes next
};

}  // namespace ftp_test
