#include "tests/ftp/engine/session/stage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <asio/co_spawn.hpp>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "ftp/engine/session/files.h"

namespace ftp_script {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr auto kHangs = 30s;

}  // namespace

Scratch::Scratch() {
    std::string name = (fs::temp_directory_path() / "websmide-engine-XXXXXX").native();
    folder_ = mkdtemp(name.data());
}

Scratch::~Scratch() {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

void Scratch::Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(folder_ / name, std::ios::binary) << bytes;
}

std::string Scratch::Read(const std::string& name) const {
    std::ifstream in(folder_ / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::vector<std::string> Scratch::Names() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder_)) names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
}

ftp::Deadlines Patient() {
    return {.connect = 60s,
            .reply = 60s,
            .data = 60s,
            .early_login = 60s,
            .ahead = 60s,
            .idle = 60s,
            .pause = 1ms,
            .abort = 60s,
            .quit = 60s};
}

ftp::Deadlines Impatient(std::chrono::milliseconds patience) {
    return {.connect = patience,
            .reply = patience,
            .data = patience,
            .early_login = patience,
            .ahead = patience,
            .idle = patience,
            .pause = 1ms,
            .abort = patience,
            .quit = patience};
}

Stage::Stage(Steps steps) : script(context, std::move(steps)), session(script, *files, record, deadlines) {}

Stage::~Stage() {
    session.Forget();
    context.restart();
    context.run_for(kHangs);
    EXPECT_TRUE(context.stopped()) << "something still waits for a session that is over";
}

ftp::Result<> Stage::Run(const Sequence& sequence) {
    std::optional<ftp::Result<>> outcome;
    asio::co_spawn(context, sequence(*this), [&](std::exception_ptr fault, ftp::Result<> result) {
        if (fault) std::rethrow_exception(fault);
        outcome = std::move(result);
        context.stop();
    });
    context.restart();
    context.run_for(kHangs);
    if (outcome) return *outcome;
    ADD_FAILURE() << "the sequence hangs" << testing::PrintToString(record.trace) << script.Surprise();
    std::abort();  // what hangs still holds on to this
}

ftp::Result<> Stage::LogIn() {
    return Run([](Stage& stage) -> ftp::Task<> {
        ftp::HostAndPort anywhere;
        auto stream = co_await stage.script.ConnectControl(anywhere);
        if (!stream) co_return ftp::Fail(stream.error());
        stage.session.control = std::make_unique<ftp::Control>(
            stage.context.get_executor(), std::move(*stream), stage.record, stage.deadlines.reply);
        const auto greeting = co_await stage.session.ReceiveFinal(stage.deadlines.reply);
        if (!greeting) co_return ftp::Fail(greeting.error());
        stage.session.logged_in = true;
        stage.session.features.size = true;
        co_return ftp::Result<>{};
    });
}

void Stage::ExpectInStepOrClosed() {
    const auto outcome = Run([](Stage& stage) -> ftp::Task<> {
        if (!stage.session.LoggedIn()) co_return ftp::Fail(ftp::FailureKind::NotConnected);
        const auto reply = co_await stage.session.Ask("CWD", "after");
        if (!reply) co_return ftp::Fail(reply.error());
        EXPECT_EQ(reply->lines.back(), "250 after");
        co_return ftp::Result<>{};
    });
    EXPECT_TRUE(outcome || !Open()) << "failed, but the session is open";
}

}  // namespace ftp_script
