#include "tests/support/scripted_world.h"

#include <algorithm>
#include <chrono>

namespace ftp_test {

void ScriptedWorld::Order(const std::string& prefix, int occurrence, Script script) {
    const std::lock_guard lock(mutex_);
    deviations_.push_back({prefix, occurrence, std::move(script)});
}

void ScriptedWorld::OrderNext(const std::string& prefix, Script script) {
    const std::lock_guard lock(mutex_);
    deviations_.push_back({prefix, CountOf(prefix) + 1, std::move(script)});
}

int ScriptedWorld::CountOf(const std::string& prefix) const {
    return static_cast<int>(
        std::ranges::count_if(commands_, [&](const std::string& line) { return line.starts_with(prefix); }));
}

Script ScriptedWorld::Record(const std::string& command) {
    const std::lock_guard lock(mutex_);
    commands_.push_back(command);
    recorded_.notify_all();
    const auto order = std::find_if(deviations_.rbegin(), deviations_.rend(), [&](const Deviation& one) {
        return command.starts_with(one.prefix) &&
               (one.occurrence == 0 || one.occurrence == CountOf(one.prefix));
    });
    return order == deviations_.rend() ? Script{Proper()} : order->script;
}

std::vector<std::string> ScriptedWorld::Commands() const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> commands = commands_;
    std::erase(commands, kConnect);
    return commands;
}

bool ScriptedWorld::WaitFor(const std::string& prefix, int occurrence) const {
    std::unique_lock lock(mutex_);
    return recorded_.wait_for(lock, std::chrono::seconds(30), [&] { return CountOf(prefix) >= occurrence; });
}

void ScriptedWorld::SetFile(const std::string& name, std::optional<std::string> bytes) {
    const std::lock_guard lock(mutex_);
    if (bytes)
        files_[name] = std::move(*bytes);
    else
        files_.erase(name);
}

std::optional<std::string> ScriptedWorld::File(const std::string& name) const {
    const std::lock_guard lock(mutex_);
    const auto found = files_.find(name);
    return found == files_.end() ? std::nullopt : std::optional(found->second);
}

void ScriptedWorld::SetListing(const std::vector<std::string>& lines) {
    const std::lock_guard lock(mutex_);
    listing_.emplace();
    for (const std::string& line : lines) *listing_ += line + "\r\n";
}

void ScriptedWorld::PutTls(TlsIdentity identity) {
    const std::lock_guard lock(mutex_);
    identity_ = std::move(identity);
}

std::optional<TlsIdentity> ScriptedWorld::Identity() const {
    const std::lock_guard lock(mutex_);
    return identity_;
}

std::string ScriptedWorld::Listing() const {
    const std::lock_guard lock(mutex_);
    if (listing_) return *listing_;
    std::string lines;
    for (const auto& [name, bytes] : files_)
        lines += "-rw-r--r--   1 demo     demo     " + std::to_string(bytes.size()) + " Jan 02 03:04 " +
                 name + "\r\n";
    return lines;
}

}  // namespace ftp_test
