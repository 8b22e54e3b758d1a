#pragma once
// The worker against a server that ends sessions and breaks transfers on order.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "tests/ftp/engine/worker_client.h"
#include "tests/support/scripted_server.h"
#include "tests/support/scripted_session.h"

namespace worker_test {

namespace fs = std::filesystem;
using namespace ftp_test;
using namespace std::chrono_literals;
using ftp::FailureKind;

inline const std::string kBytes = "0123456789";

class Living : public testing::Test {
 protected:
    Living() {
        std::string name = (fs::temp_directory_path() / "websmide-living-XXXXXX").native();
        folder_ = mkdtemp(name.data());
        server_.AddFile("a.txt", kBytes);
        std::ofstream(folder_ / "source") << kBytes;
    }
    ~Living() override {
        client_.reset();
        fs::remove_all(folder_);
    }

    WorkerClient& Client(ftp::Deadlines deadlines = {}) {
        if (deadlines.pause == ftp::Deadlines().pause) deadlines.pause = 1ms;
        client_ = std::make_unique<WorkerClient>(deadlines);
        const Told told = client_->Connect(server_.HostField());
        EXPECT_TRUE(told.Well()) << told;
        return *client_;
    }
    int Count(const std::string& command) const {
        const auto commands = server_.Commands();
        return static_cast<int>(
            std::ranges::count_if(commands, [&](const auto& each) { return each.starts_with(command); }));
    }
    ftp::Operation Retrieve() const { return ftp::Retrieve{"a.txt", (folder_ / "target").native()}; }
    ftp::Operation Store() const { return ftp::Store{(folder_ / "source").native(), "b.txt", "label of b"}; }
    /// Fetches the file; the server breaks off when so many bytes have come.
    Told BreakAndFinish(std::int64_t bytes) {
        client_->Start(Retrieve());
        client_->AwaitBytes(bytes);
        server_.Release();
        return client_->Finish();
    }
    std::string Target() const {
        std::ifstream in(folder_ / "target", std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    void ExpectNoLitter() const {
        for (const auto& entry : fs::directory_iterator(folder_))
            EXPECT_FALSE(entry.path().filename().native().ends_with(".tmp")) << entry;
    }

    fs::path folder_;
    ScriptedServer server_;
    std::unique_ptr<WorkerClient> client_;
};

}  // namespace worker_test
