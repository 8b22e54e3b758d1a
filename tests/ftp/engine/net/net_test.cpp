// Deadlines, look-ups and connections on loopback.

#include <gtest/gtest.h>

#include <sys/socket.h>

#include <asio/co_spawn.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <asio/read.hpp>
#include <asio/redirect_error.hpp>
#include <asio/steady_timer.hpp>
#include <asio/use_awaitable.hpp>
#include <cerrno>
#include <functional>
#include <list>
#include <memory>
#include <span>
#include <string>
#include <system_error>

#include "ftp/engine/net/deadline.h"
#include "ftp/engine/net/local_files.h"
#include "ftp/engine/net/resolver.h"
#include "ftp/engine/net/socket_calls.h"
#include "ftp/engine/net/stream.h"

namespace ftp {
namespace {

using asio::ip::tcp;
using namespace std::chrono_literals;

class NetTest : public testing::Test {
 protected:
    /// Runs what the test says to its end, and all that it leaves behind.
    void Run(std::function<asio::awaitable<void>()> body) {
        bool done = false;
        asio::co_spawn(context_, std::move(body), [&](std::exception_ptr fault) {
            if (fault) std::rethrow_exception(fault);
            done = true;
        });
        context_.run_for(30s);
        ASSERT_TRUE(done && context_.stopped()) << "it hangs";
    }
    tcp::acceptor Listen(const char* address, int backlog = 8) {
        tcp::acceptor acceptor(context_, {asio::ip::make_address(address), 0});
        acceptor.listen(backlog);
        return acceptor;
    }
    asio::awaitable<void> Wait(std::chrono::milliseconds time) {
        asio::steady_timer timer(context_, time);
        co_await timer.async_wait(asio::use_awaitable);
    }

    asio::io_context context_;
    std::unique_ptr<Transport> transport_ = MakeTcpTransport(context_.get_executor());
};

/// A port whose queue is full, so that the kernel answers nobody.
class DeadPort {
 public:
    explicit DeadPort(asio::io_context& context) : acceptor_(context, {asio::ip::address_v4::loopback(), 0}) {
        acceptor_.listen(0);
        for (int i = 0; i < 4; ++i) {
            tcp::socket& caller = callers_.emplace_back(context, tcp::v4());
            caller.non_blocking(true);
            const tcp::endpoint port = acceptor_.local_endpoint();
            EXPECT_TRUE(::connect(caller.native_handle(), port.data(), static_cast<socklen_t>(port.size())) ==
                            0 ||
                        errno == EINPROGRESS);
        }
    }
    HostAndPort Where() const { return {"127.0.0.1", acceptor_.local_endpoint().port()}; }

 private:
    tcp::acceptor acceptor_;
    std::list<tcp::socket> callers_;
};

FailureKind KindOf(const Result<std::unique_ptr<Stream>>& result) {
    EXPECT_FALSE(result);
    return result ? FailureKind::Protocol : result.error().kind;
}

TEST_F(NetTest, DeadlineExpiresOnce) {
    int expired = 0;
    Run([&]() -> asio::awaitable<void> {
        asio::steady_timer stopped(context_, asio::steady_timer::time_point::max());
        const Deadline deadline(context_.get_executor(), 1ms, [&] {
            ++expired;
            stopped.cancel();
        });
        EXPECT_FALSE(deadline.Expired());
        asio::error_code woken;
        co_await stopped.async_wait(asio::redirect_error(asio::use_awaitable, woken));
        EXPECT_TRUE(deadline.Expired());
    });
    EXPECT_EQ(expired, 1);
}

TEST_F(NetTest, DeadlineThatIsLeftInTimeIsSilent) {
    bool expired = false;
    Run([&]() -> asio::awaitable<void> {
        {
            const Deadline deadline(context_.get_executor(), 1ms, [&] { expired = true; });
        }
        co_await Wait(5ms);
    });
    EXPECT_FALSE(expired);
}

TEST_F(NetTest, DeadlineCountsFromTheLastMovement) {
    Run([&]() -> asio::awaitable<void> {
        const auto start = std::chrono::steady_clock::now();
        asio::steady_timer stopped(context_, asio::steady_timer::time_point::max());
        Deadline deadline(context_.get_executor(), 40ms, [&] { stopped.cancel(); });
        co_await Wait(20ms);
        deadline.Restart();
        const auto restarted = std::chrono::steady_clock::now();
        asio::error_code woken;
        co_await stopped.async_wait(asio::redirect_error(asio::use_awaitable, woken));
        EXPECT_GE(std::chrono::steady_clock::now() - restarted, 40ms);
        EXPECT_GE(std::chrono::steady_clock::now() - start, 60ms);
    });
}

TEST_F(NetTest, NumericAddressesAreNotLookedUp) {
    for (const char* address : {"127.0.0.1", "::1", "0.0.0.0"}) {
        Run([&]() -> asio::awaitable<void> {
            std::function<void()> cancel;
            const HostAndPort where{address, 2121};
            const auto found = co_await LookUp(where, cancel);
            EXPECT_TRUE(found && found->size() == 1 && found->front().address().to_string() == address);
            EXPECT_EQ(found->front().port(), 2121);
        });
        context_.restart();
    }
}

TEST_F(NetTest, CancelledLookUpEndsAtOnceWhateverTheSystemDoes) {
    Run([&]() -> asio::awaitable<void> {
        std::function<void()> cancel;
        asio::post(context_, [&] {
            if (cancel) cancel();
        });
        const HostAndPort where{std::string(64, 'a') + ".invalid", 21};
        const auto found = co_await LookUp(where, cancel);
        EXPECT_FALSE(found);
        EXPECT_FALSE(cancel);
    });
}

TEST_F(NetTest, NamesAreLookedUpAndConnectedTo) {
    tcp::acceptor acceptor = Listen("127.0.0.1");
    Run([&]() -> asio::awaitable<void> {
        const HostAndPort where{"localhost", acceptor.local_endpoint().port()};
        const auto stream = co_await transport_->ConnectControl(where);
        EXPECT_TRUE(stream);
    });
}

TEST_F(NetTest, NobodyListens) {
    const std::uint16_t port = Listen("127.0.0.1").local_endpoint().port();
    Run([&]() -> asio::awaitable<void> {
        const HostAndPort where{"127.0.0.1", port};
        const auto stream = co_await transport_->ConnectControl(where);
        EXPECT_EQ(KindOf(stream), FailureKind::ConnectionRefused);
    });
}

TEST_F(NetTest, ConnectIsCancelled) {
    const DeadPort dead(context_);
    Run([&]() -> asio::awaitable<void> {
        asio::post(context_, [this] { transport_->CancelConnect(); });
        const auto stream = co_await transport_->ConnectControl(dead.Where());
        EXPECT_EQ(KindOf(stream), FailureKind::Cancelled);
    });
}

TEST_F(NetTest, ConnectIsCancelledInTheMiddleOfALookUp) {
    Run([&]() -> asio::awaitable<void> {
        asio::post(context_, [this] { transport_->CancelConnect(); });
        const HostAndPort where{"localhost", 1};
        const auto stream = co_await transport_->ConnectControl(where);
        EXPECT_EQ(KindOf(stream), FailureKind::Cancelled);
    });
}

TEST_F(NetTest, ClosedStreamEndsWhatWaitsOnIt) {
    tcp::acceptor acceptor = Listen("127.0.0.1");
    Run([&]() -> asio::awaitable<void> {
        const HostAndPort where{"127.0.0.1", acceptor.local_endpoint().port()};
        auto stream = co_await transport_->ConnectControl(where);
        EXPECT_TRUE(stream);
        asio::post(context_, [&] { (*stream)->Close(); });
        char byte = 0;
        const auto got = co_await (*stream)->Read(asio::buffer(&byte, 1));
        EXPECT_FALSE(got);
        EXPECT_EQ(got.error().kind, FailureKind::Cancelled);
        EXPECT_EQ((*stream)->Unsent(), 0U);
        (*stream)->Close();
        (*stream)->Reset();
        const auto written = co_await (*stream)->Write(asio::buffer(&byte, 1));
        EXPECT_FALSE(written);
    });
}

/// A file that is not on a disk of the system's.
class MemorySource : public SourceFile {
 public:
    explicit MemorySource(std::string bytes) : bytes_(std::move(bytes)) {}
    std::int64_t Size() const override { return static_cast<std::int64_t>(bytes_.size()); }
    Result<> Seek(std::int64_t offset) override {
        at_ = static_cast<std::size_t>(offset);
        return {};
    }
    Result<std::size_t> Read(std::span<char> into) override {
        const std::size_t got = bytes_.copy(into.data(), into.size(), at_);
        at_ += got;
        return got;
    }

 private:
    const std::string bytes_;
    std::size_t at_ = 0;
};

TEST_F(NetTest, FileThatTheSystemCannotSendIsReadAndWritten) {
    tcp::acceptor acceptor = Listen("127.0.0.1");
    MemorySource source(std::string(20'000, 'x') + "end");
    Run([&]() -> asio::awaitable<void> {
        const HostAndPort where{"127.0.0.1", acceptor.local_endpoint().port()};
        const auto stream = co_await transport_->ConnectControl(where);
        EXPECT_TRUE(stream);
        if (!stream) co_return;
        tcp::socket peer = co_await acceptor.async_accept(asio::use_awaitable);
        std::string arrived;
        for (;;) {
            const auto sent = co_await (*stream)->Send(source, 8'000);
            EXPECT_TRUE(sent);
            if (!sent || *sent == 0) break;
            EXPECT_LE(*sent, 8'000U);
            std::string piece(*sent, ' ');
            co_await asio::async_read(peer, asio::buffer(piece), asio::use_awaitable);
            arrived += piece;
        }
        EXPECT_TRUE(arrived == std::string(20'000, 'x') + "end") << arrived.size();
    });
}

TEST(SocketCalls, FailureOfSendingTellsTheFileFromTheLine) {
    EXPECT_EQ(FailureOfSending(EAGAIN), asio::error::would_block);
    EXPECT_EQ(FailureOfSending(EINTR), asio::error::would_block);
    EXPECT_EQ(FailureOfSending(EINVAL), asio::error::operation_not_supported);
    EXPECT_EQ(FailureOfSending(EIO), std::errc::io_error);
    EXPECT_EQ(FailureOfSending(EIO).value(), EIO);
    EXPECT_EQ(FailureOfSending(ECONNRESET), asio::error::connection_reset);
    EXPECT_NE(FailureOfSending(EPIPE), std::errc::io_error);
}

TEST_F(NetTest, ReadingAtOnceDoesNotWait) {
    tcp::acceptor acceptor = Listen("127.0.0.1");
    Run([&]() -> asio::awaitable<void> {
        const HostAndPort where{"127.0.0.1", acceptor.local_endpoint().port()};
        const auto stream = co_await transport_->ConnectControl(where);
        EXPECT_TRUE(stream);
        if (!stream) co_return;
        tcp::socket peer = co_await acceptor.async_accept(asio::use_awaitable);
        std::string into(8, ' ');
        EXPECT_EQ((*stream)->ReadAtOnce(asio::buffer(into)), 0U);
        peer.send(asio::buffer("welcome", 7));
        for (std::size_t got = 0; got == 0; co_await Wait(1ms))
            got = (*stream)->ReadAtOnce(asio::buffer(into));
        EXPECT_EQ(into, "welcome ");
    });
}

}  // namespace
}  // namespace ftp
