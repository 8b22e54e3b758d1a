#pragma once
// The plainest possible FTP client, for the tests of the test servers: one blocking socket, lines out, lines
// in.

#include <cstdint>
#include <string>

namespace ftp_test {

class LineClient {
 public:
    /// Connects to loopback. Throws std::system_error when nobody listens.
    LineClient(const std::string& address, std::uint16_t port);
    ~LineClient();
    LineClient(const LineClient&) = delete;
    LineClient& operator=(const LineClient&) = delete;

    void Send(const std::string& bytes);
    /// All lines of the next reply, each with "\n" at its end; empty when the peer has closed.
    std::string Reply();
    std::string Ask(const std::string& command) { return Send(command + "\r\n"), Reply(); }
    /// Everything until the peer closes.
    std::string Rest();
    /// True when the connection ended with a reset rather than an orderly close.
    bool WasReset() const { return reset_; }

 private:
    bool Fill();
    std::string Line();

    int socket_;
    bool reset_ = false;
    std::string buffer_;
};

}  // namespace ftp_test
