#include "tests/ftp/engine/worker_client.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <ostream>
#include <stdexcept>
#include <thread>
#include <utility>

namespace worker_test {
namespace {

using namespace std::chrono_literals;

constexpr auto kHangs = 60s;

}  // namespace

std::optional<ftp::FailureKind> Told::Kind() const {
    if (problems.size() != 1) return std::nullopt;
    return problems.front().kind;
}

std::ostream& operator<<(std::ostream& out, const Told& told) {
    for (const ftp::Failure& problem : told.problems)
        out << "problem " << static_cast<int>(problem.kind) << ' ' << problem.code << ' ' << problem.detail
            << '\n';
    for (const std::string& line : told.trace) out << line << '\n';
    return out;
}

WorkerClient::WorkerClient(ftp::Deadlines deadlines)
    : worker_(std::make_unique<ftp::Worker>(
          [this](ftp::Notification notification) { Hear(std::move(notification)); }, deadlines)) {}

void WorkerClient::Hear(ftp::Notification notification) {
    const std::lock_guard lock(mutex_);
    if (const auto* session = std::get_if<ftp::SessionChanged>(&notification.what)) {
        connected_ = session->connected;
        heard_.notify_all();
    }
    const auto* said = std::get_if<ftp::CommandSent>(&notification.what);
    if (said && said->line == fails_at) {
        fails_at.clear();
        throw std::runtime_error("cannot hear of it");
    }
    if (notification.request == 0) return HearAside(notification);
    EXPECT_EQ(notification.request, request_);
    EXPECT_FALSE(finished_) << "told after Finished";
    if (auto* command = std::get_if<ftp::CommandSent>(&notification.what))
        told_.trace.push_back("> " + command->line);
    if (auto* reply = std::get_if<ftp::ReplyLine>(&notification.what))
        told_.trace.push_back("< " + reply->line);
    if (auto* problem = std::get_if<ftp::Problem>(&notification.what))
        told_.problems.push_back(problem->failure);
    if (auto* session = std::get_if<ftp::SessionChanged>(&notification.what))
        told_.connected = session->connected;
    if (auto* tls = std::get_if<ftp::TlsAgreed>(&notification.what)) told_.tls = *tls;
    if (auto* batch = std::get_if<ftp::ListingBatch>(&notification.what)) {
        told_.lines.insert(told_.lines.end(), batch->lines.begin(), batch->lines.end());
        ++batches_;
        if (takes_batches) worker_->BatchTaken();
    }
    finished_ = std::holds_alternative<ftp::Finished>(notification.what);
    if (finished_ && ends_run_) in_run_ = false;
    ++notifications_;
    heard_.notify_all();
}

void WorkerClient::HearAside(const ftp::Notification& notification) {
    const bool of_file = std::holds_alternative<ftp::FileProblem>(notification.what);
    EXPECT_FALSE(std::holds_alternative<ftp::Finished>(notification.what));
    EXPECT_TRUE(in_run_ || !of_file);
    if (const auto* command = std::get_if<ftp::CommandSent>(&notification.what))
        aside_.trace.push_back("> " + command->line);
    if (const auto* reply = std::get_if<ftp::ReplyLine>(&notification.what))
        aside_.trace.push_back("< " + reply->line);
    if (const auto* problem = std::get_if<ftp::FileProblem>(&notification.what))
        aside_.problems.push_back(*problem);
    if (const auto* problem = std::get_if<ftp::Problem>(&notification.what)) {
        EXPECT_EQ(problem->failure.detail, "cannot hear of it");
        aside_.faults.push_back(problem->failure);
    }
}

WorkerClient::Aside WorkerClient::TakeAside() {
    const std::lock_guard lock(mutex_);
    return std::exchange(aside_, {});
}

void WorkerClient::Await(const std::function<bool()>& condition) {
    std::unique_lock lock(mutex_);
    if (heard_.wait_for(lock, kHangs, condition)) return;
    std::cerr << "the operation hangs\n" << told_;
    std::abort();
}

void WorkerClient::Start(ftp::Operation operation) {
    {
        const std::lock_guard lock(mutex_);
        told_ = {};
        notifications_ = 0;
        batches_ = 0;
        finished_ = false;
        ++request_;
        if (std::holds_alternative<ftp::BeginRun>(operation)) in_run_ = true;
        ends_run_ = std::holds_alternative<ftp::EndRun>(operation);
    }
    worker_->Start({.id = request_,
                    .operation = std::move(operation),
                    .passive = passive,
                    .image = image,
                    .keep_alive = keep_alive});
}

Told WorkerClient::Finish() {
    Await([this] { return finished_; });
    return std::exchange(told_, {});
}

Told WorkerClient::Run(ftp::Operation operation) {
    Start(std::move(operation));
    return Finish();
}

Told WorkerClient::Connect(const std::string& host_field, const std::string& password) {
    return Run(ftp::Connect{host_field, "demo", password, {}});
}

void WorkerClient::AwaitNotification(std::size_t count) {
    Await([&] { return finished_ || notifications_ >= count; });
}

void WorkerClient::AwaitBatches(int batches) {
    Await([&] { return finished_ || batches_ >= batches; });
}

void WorkerClient::AwaitConnected(bool connected) {
    Await([&] { return connected_ == connected; });
}

bool WorkerClient::Connected() {
    const std::lock_guard lock(mutex_);
    return connected_;
}

void WorkerClient::AwaitReply(const std::string& beginning, int count) {
    Await([&] {
        return finished_ || std::ranges::count_if(told_.trace, [&](const std::string& line) {
                                return line.starts_with("< " + beginning);
                            }) >= count;
    });
}

void WorkerClient::AwaitBytes(std::int64_t bytes) {
    const auto finished = [this] {
        const std::lock_guard lock(mutex_);
        return finished_;
    };
    while (worker_->BytesTransferred() < bytes && !finished()) std::this_thread::yield();
}

}  // namespace worker_test
