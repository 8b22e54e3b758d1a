#pragma once
// A server that the fuzz input leads: it does what is right, or something else, whenever everybody waits.

#include <asio/io_context.hpp>
#include <map>
#include <memory>
#include <string>

#include "tests/fuzz/input.h"
#include "tests/fuzz/memory_net.h"

namespace fuzz {

class Server {
 public:
    Server(asio::io_context& context, MemoryTransport& net, Input& input)
        : context_(context), net_(net), input_(input) {}

    static constexpr unsigned kSteps = 240;
    /// One step, 0 to kSteps - 1; what it needs to know beside is taken from the input.
    void Move(unsigned step);
    /// Whether connections from here on are offered TLS.
    void OfferTls(bool offer) { offers_tls_ = offer; }
    /// Closes everything, for good.
    void GoAway();
    /// Whether all that it has done since the newest connection was right, with no time lost over it.
    bool Proper() const { return proper_words_ && proper_data_; }
    /// The same of its words alone.
    bool SpeaksProperly() const { return proper_words_; }
    /// What it holds under a name.
    std::string FileNamed(const std::string& name) const;
    /// What has been said since it last began with a transfer.
    const std::string& Said() const { return said_; }

 private:
    bool DoRight();
    bool ShakeHands();
    void DoWrong();
    void WrongWords();
    void WrongData();
    void LetTimePass();

    std::string RightAnswer(const std::string& line);
    std::string BeginTransfer(const std::string& verb, const std::string& name);
    bool CarryTransferOn();
    void EndTransfer(const std::string& reply);
    bool HasCommand() const;
    std::string TakeCommand();
    void Say(const std::string& bytes);

    enum class Way { None, Down, Up };

    asio::io_context& context_;
    MemoryTransport& net_;
    Input& input_;
    std::shared_ptr<Pipe> greeted_;  // the connection that it speaks on
    std::shared_ptr<Pipe> used_;     // the data connection of the transfer before
    bool offers_tls_ = false;
    bool proper_words_ = false;
    bool proper_data_ = false;
    std::string rest_of_reply_;  // begun and not said to its end
    std::string last_;           // what was said last
    std::string said_;
    Way transfer_ = Way::None;
    std::string name_;                         // of the file that moves
    std::string outgoing_;                     // its bytes that have not been sent
    std::size_t offset_ = 0;                   // REST
    std::map<std::string, std::string> kept_;  // what has been sent here
};

}  // namespace fuzz
