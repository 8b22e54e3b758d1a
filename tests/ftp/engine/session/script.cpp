#include "tests/ftp/engine/session/script.h"

#include <algorithm>
#include <asio/post.hpp>
#include <asio/redirect_error.hpp>
#include <asio/use_awaitable.hpp>
#include <utility>

namespace ftp_script {
namespace {

using ftp::FailureKind;
using Pipe = Script::Pipe;

asio::awaitable<void> Wait(asio::steady_timer& timer) {
    asio::error_code woken;
    timer.expires_at(asio::steady_timer::time_point::max());
    co_await timer.async_wait(asio::redirect_error(asio::use_awaitable, woken));
}

/// The client's end.
class ScriptStream : public ftp::Stream {
 public:
    ScriptStream(Script& script, std::shared_ptr<Pipe> pipe) : script_(script), pipe_(std::move(pipe)) {}
    ~ScriptStream() override { Close(); }

    ftp::Task<> Connected() override {
        const auto pipe = pipe_;
        while (!pipe->stands && !pipe->client_closed && !pipe->server_crashed) co_await Wait(pipe->moved);
        if (pipe->client_closed) co_return ftp::Fail(FailureKind::Cancelled);
        if (!pipe->stands) co_return ftp::Fail(FailureKind::ConnectionRefused);
        co_return ftp::Result<>{};
    }

    ftp::Task<std::size_t> Read(asio::mutable_buffer into) override {
        const auto pipe = pipe_;
        while (!pipe->client_closed && pipe->to_client.empty() && !pipe->server_ended &&
               !pipe->server_crashed)
            co_await Wait(pipe->moved);
        if (pipe->client_closed) co_return ftp::Fail(FailureKind::Cancelled);
        if (pipe->server_crashed) co_return ftp::Fail(FailureKind::ConnectionLost);
        const std::size_t size = std::min({pipe->piece, pipe->to_client.size(), into.size()});
        std::copy_n(pipe->to_client.begin(), size, static_cast<char*>(into.data()));
        pipe->to_client.erase(0, size);
        co_await asio::post(pipe->moved.get_executor(), asio::use_awaitable);
        co_return size;
    }

    ftp::Task<> Write(asio::const_buffer bytes) override {
        const auto pipe = pipe_;
        Script& script = script_;
        if (pipe->client_closed) co_return ftp::Fail(FailureKind::Cancelled);
        if (pipe->server_ended || pipe->server_crashed) co_return ftp::Fail(FailureKind::ConnectionLost);
        pipe->to_server.append(static_cast<const char*>(bytes.data()), bytes.size());
        script.Advance();
        co_await asio::post(pipe->moved.get_executor(), asio::use_awaitable);
        co_return ftp::Result<>{};
    }

    ftp::Task<std::size_t> Send(ftp::SourceFile& file, std::size_t limit) override {
        std::string buffer(std::min(pipe_->piece, limit), '\0');
        const auto got = file.Read(buffer);
        if (!got || *got == 0) co_return got;
        const auto written = co_await Write(asio::buffer(buffer.data(), *got));
        if (!written) co_return ftp::Fail(written.error());
        co_return got;
    }

    std::size_t Unsent() const override { return 0; }
    ftp::Task<> EndWriting() override {
        pipe_->client_ended = true;
        script_.Advance();
        co_return ftp::Result<>{};
    }
    void Close() override {
        if (std::exchange(pipe_->client_closed, true)) return;
        pipe_->moved.cancel();
    }
    void Reset() override { Close(); }

 private:
    Script& script_;
    std::shared_ptr<Pipe> pipe_;
};

/// What passes for TLS here: each side says hello, and the rest goes through as it is. The server's hello
/// says what is wrong with its certificate.
class ScriptSecureStream : public ftp::SecureStream {
 public:
    explicit ScriptSecureStream(std::unique_ptr<ftp::Stream> plain) : plain_(std::move(plain)) {}

    ftp::Task<> Connected() override {
        const auto stands = co_await plain_->Connected();
        if (!stands) co_return stands;
        const std::string hello = kClientHello + "\r\n";
        const auto said = co_await plain_->Write(asio::buffer(hello));
        if (!said) co_return said;
        std::string answer;
        while (!answer.ends_with("\r\n")) {
            char next = 0;
            const auto got = co_await plain_->Read(asio::buffer(&next, 1));
            if (!got) co_return ftp::Fail(got.error());
            if (*got == 0) co_return ftp::Fail(FailureKind::ConnectionLost);
            answer += next;
        }
        if (!answer.starts_with(kServerHello)) co_return ftp::Fail(FailureKind::TlsFailed);
        certificate_.fingerprint = "AB:CD";
        certificate_.expired = answer.find("expired") != std::string::npos;
        co_return ftp::Result<>{};
    }
    ftp::Task<std::size_t> Read(asio::mutable_buffer into) override { return plain_->Read(into); }
    ftp::Task<> Write(asio::const_buffer bytes) override { return plain_->Write(bytes); }
    ftp::Task<std::size_t> Send(ftp::SourceFile& file, std::size_t limit) override {
        return plain_->Send(file, limit);
    }
    std::size_t Unsent() const override { return plain_->Unsent(); }
    ftp::Task<> EndWriting() override { return plain_->EndWriting(); }
    void Close() override { plain_->Close(); }
    void Reset() override { plain_->Reset(); }
    const ftp::Certificate& PeerCertificate() const override { return certificate_; }
    std::string Version() const override { return "TLSv1.3"; }

 private:
    std::unique_ptr<ftp::Stream> plain_;
    ftp::Certificate certificate_;
};

class ScriptListener : public ftp::Listener {
 public:
    ScriptListener(Script& script, std::shared_ptr<Pipe> pipe) : script_(script), pipe_(std::move(pipe)) {}

    std::string Address() const override { return "127.0.0.1"; }
    bool IsIpv6() const override { return false; }
    std::uint16_t Port() const override { return 5001; }
    ftp::Task<std::unique_ptr<ftp::Stream>> Accept() override {
        auto stream = std::make_unique<ScriptStream>(script_, pipe_);
        const auto stands = co_await stream->Connected();
        if (!stands) co_return ftp::Fail(stands.error());
        co_return std::unique_ptr<ftp::Stream>(std::move(stream));
    }
    void Close() override {
        if (pipe_->stands) return;  // accepted: the stream has it
        pipe_->client_closed = true;
        pipe_->moved.cancel();
    }

 private:
    Script& script_;
    std::shared_ptr<Pipe> pipe_;
};

}  // namespace

Step Connects() {
    return {Step::Kind::Connects, {}};
}
Step Command(const std::string& line) {
    return {Step::Kind::Command, line};
}
Step Reply(const std::string& lines) {
    return {Step::Kind::Reply, lines};
}
Step Optional(const std::string& lines) {
    return {Step::Kind::Reply, lines, 0, true};
}
Step Beside(const std::string& lines) {
    return {Step::Kind::Reply, lines, 0, true, true};
}
Step Over(Step step) {
    step.over = true;
    return step;
}
Step HangsUp() {
    return {Step::Kind::HangsUp, {}};
}
Step DataConnects(std::uint16_t port) {
    return {Step::Kind::DataConnects, {}, port};
}
Step DataCalls() {
    return {Step::Kind::DataCalls, {}};
}
Step Sends(const std::string& bytes) {
    return {Step::Kind::Sends, bytes};
}
Step Ends() {
    return {Step::Kind::Ends, {}};
}
Step Takes(const std::string& bytes) {
    return {Step::Kind::Takes, bytes};
}
Step TakesEnd() {
    return {Step::Kind::TakesEnd, {}};
}

std::string Name(Fault fault) {
    static const char* const names[] = {"None", "Close", "Reset", "Goodbye", "Refuse", "Silence", "Stall"};
    return names[static_cast<int>(fault)];
}

Script::Script(asio::io_context& context, Steps steps)
    : context_(context), steps_(std::move(steps)), connecting_(context) {}

void Script::Follow(Play play) {
    play_ = std::move(play);
    start_ = next_;
    if (control_) {
        control_->piece = play_.piece;
        if (play_.call_at != 0) Advance();  // nobody calls before the sequence has begun
    }
}

Script::~Script() = default;

void Script::Interject(const std::string& bytes) {
    control_->to_client += bytes;
    control_->moved.cancel();
}

ftp::Task<std::unique_ptr<ftp::Stream>> Script::ConnectControl(ftp::HostAndPort) {
    cancelled_ = false;
    const auto pipe = control_ = std::make_shared<Pipe>(context_);
    pipe->piece = play_.piece;
    owed_ = 1;
    transfer_ = false;
    Advance();
    if (mode_ == Mode::Free && !pipe->stands) {
        pipe->stands = true;
        Say("500 Cannot");
    }
    while (!pipe->stands && mode_ == Mode::Silent && !cancelled_) co_await Wait(connecting_);
    if (cancelled_) co_return ftp::Fail(FailureKind::Cancelled);
    if (!pipe->stands) co_return ftp::Fail(FailureKind::ConnectionRefused);
    co_return std::unique_ptr<ftp::Stream>(std::make_unique<ScriptStream>(*this, pipe));
}

ftp::Result<std::unique_ptr<ftp::Stream>> Script::StartData(std::uint16_t port) {
    data_ = std::make_shared<Pipe>(context_);
    data_->piece = play_.piece;
    data_->server_crashed = mode_ == Mode::Gone;
    data_port_ = port;
    Advance();
    return std::unique_ptr<ftp::Stream>(std::make_unique<ScriptStream>(*this, data_));
}

ftp::Result<std::unique_ptr<ftp::Listener>> Script::Listen() {
    data_ = std::make_shared<Pipe>(context_);
    data_->piece = play_.piece;
    listening_ = true;
    return std::unique_ptr<ftp::Listener>(std::make_unique<ScriptListener>(*this, data_));
}

std::unique_ptr<ftp::SecureStream> Script::SecureControl(std::unique_ptr<ftp::Stream> plain,
                                                         const std::string&) {
    return std::make_unique<ScriptSecureStream>(std::move(plain));
}

std::unique_ptr<ftp::Stream> Script::SecureData(std::unique_ptr<ftp::Stream> plain) {
    return std::make_unique<ScriptSecureStream>(std::move(plain));
}

void Script::CancelConnect() {
    cancelled_ = true;
    connecting_.cancel();
}

void Script::Advance() {
    while (mode_ == Mode::Following && next_ < steps_.size()) {
        const Step& step = steps_[next_];
        if (next_ - start_ == play_.fault_at) {
            Misbehave();
        } else if (next_ - start_ == play_.call_at && !std::exchange(called_, true)) {
            asio::post(context_, play_.call);
            if (play_.stops_at_call) Leave();
        } else if (CarryOut(step)) {
            ++next_;
        } else {
            const auto line = NextLine();
            if (!line || step.kind == Step::Kind::Connects) break;
            if (!called_) surprise_ += "'" + *line + "' instead of '" + step.bytes + "'; ";
            Leave();
        }
    }
    if (mode_ == Mode::Following && Completed()) Leave();
    if (mode_ == Mode::Free) AnswerFreely();
}

/// False: the client has to do something first.
bool Script::CarryOut(const Step& step) {
    switch (step.kind) {
        case Step::Kind::Connects:
            return control_ && !std::exchange(control_->stands, true);
        case Step::Kind::Command:
            return TakeCommand(step.bytes);
        case Step::Kind::Reply:
            Say(step.bytes);
            return true;
        case Step::Kind::HangsUp:
            control_->server_ended = true;
            control_->moved.cancel();
            return true;
        case Step::Kind::DataConnects:
            if (data_port_ != step.port) return false;
            data_port_.reset();
            data_->stands = true;
            break;
        case Step::Kind::DataCalls:
            if (!std::exchange(listening_, false)) return false;
            data_->stands = true;
            break;
        case Step::Kind::Sends:
            data_->to_client += step.bytes;
            break;
        case Step::Kind::Ends:
            data_->server_ended = true;
            break;
        case Step::Kind::Takes:
            if (!data_->to_server.starts_with(step.bytes)) return false;
            data_->to_server.erase(0, step.bytes.size());
            return true;
        case Step::Kind::TakesEnd:
            return data_->client_ended && data_->to_server.empty();
    }
    data_->moved.cancel();
    return true;
}

/// The line that the client has sent next, without its end.
std::optional<std::string> Script::NextLine() const {
    if (!control_) return std::nullopt;
    const auto end = control_->to_server.find("\r\n");
    if (end == std::string::npos) return std::nullopt;
    return control_->to_server.substr(0, end);
}

bool Script::TakeCommand(const std::string& line) {
    if (NextLine() != line) return false;
    control_->to_server.erase(0, line.size() + 2);
    ++owed_;
    if (line.starts_with("LIST") || line.starts_with("RETR") || line.starts_with("STOR") ||
        line.starts_with("APPE")) {
        transfer_ = true;
        due_before_ = owed_ - 1;
    }
    return true;
}

void Script::Say(const std::string& lines) {
    if (!lines.starts_with('1')) {
        --owed_;
        if (due_before_ == 0) transfer_ = false;
        due_before_ = std::max(0, due_before_ - 1);
    }
    for (int times = play_.doubled ? 2 : 1; times > 0; --times) control_->to_client += lines + "\r\n";
    control_->moved.cancel();
}

void Script::Misbehave() {
    switch (play_.fault) {
        case Fault::Goodbye:
            if (control_ && control_->stands) Say("421 Goodbye");
            return End(false);
        case Fault::None:
        case Fault::Close:
            return End(false);
        case Fault::Reset:
            return End(true);
        case Fault::Silence:
            mode_ = Mode::Silent;
            return;
        case Fault::Stall:
        case Fault::Refuse:
            return Leave();
    }
}

void Script::End(bool crashed) {
    mode_ = Mode::Gone;
    for (const auto& pipe : {control_, data_}) {
        if (!pipe || (pipe == data_ && listening_)) continue;
        (crashed || !pipe->stands ? pipe->server_crashed : pipe->server_ended) = true;
        pipe->moved.cancel();
    }
}

/// From here on every command gets an answer, whatever it is.
void Script::Leave() {
    mode_ = Mode::Free;
    if (!control_ || !control_->stands) return;
    if (HoldsTransfers() && transfer_) return;  // what stands behind it waits
    while (owed_ > 0) Say("500 Cannot");
}

/// Whether a transfer under way gets its final reply only when ABOR asks for it.
bool Script::HoldsTransfers() const {
    return called_ || play_.fault == Fault::Stall;
}

void Script::AnswerFreely() {
    while (const auto line = NextLine()) {
        const bool transferring = transfer_;
        TakeCommand(*line);
        if (*line == "ABOR" && transferring) {
            const int behind = owed_ - 2;  // what stands between the transfer command and ABOR
            for (std::size_t i = 0; i < play_.abort_replies.size(); ++i) {
                Say(play_.abort_replies[i]);
                for (int each = 0; i == 0 && each < behind; ++each) Say("229 Next (|||5003|)");
            }
            owed_ = 0;
        } else if (!transfer_ || !HoldsTransfers()) {
            Say(*line == "NOOP" ? "200 Fine" : *line == "CWD after" ? "250 after" : "500 Cannot");
        }
    }
}

}  // namespace ftp_script
