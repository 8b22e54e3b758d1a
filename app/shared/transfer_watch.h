#pragma once
// Watches over the batch of files that is being moved: what the program tells of it beside its windows. UI
// thread only.

#include <QObject>
#include <QTimer>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "ftp/transfer_pace.h"
#include "platform/desktop_signs.h"

namespace app {

/// A batch is one file, a queue of them or a folder. While it runs, its pace is told in words and its
/// progress in the task bar. When a long one ends and the user is elsewhere, a notice of the desktop says so.
/// The desktop is not spoken to before the first batch has lasted a moment.
class TransferWatch : public QObject {
    Q_OBJECT
 public:
    using Clock = std::function<std::chrono::milliseconds()>;

    /// What has taken longer is worth a notice; tests set it.
    static inline std::chrono::milliseconds long_batch{30'000};
    /// The clock of watches to come; tests set it.
    static Clock clock;

    explicit TransferWatch(QObject* parent = nullptr);

    /// `total`: bytes of all its files, where that is known. A batch that is still running is ended.
    void Begin(std::optional<std::int64_t> total);
    void BeginFile(const QString& name, std::optional<std::int64_t> size);
    /// The current file is of this size, whatever was thought before.
    void SetSize(std::int64_t size);
    /// Bytes of the current file so far; nothing between files.
    void Report(std::int64_t bytes);
    void EndFile();
    /// One more of the files has failed, the current one or an earlier one.
    void Fail() { ++outcome_.failed; }
    /// Something has failed, and nobody knows which file was hit.
    void AddTrouble() { ++outcome_.troubles; }
    /// By the user: the whole batch, or the current file, which is the whole batch where there is no other.
    void Abort() { outcome_.aborted = true; }
    void AbortFile() { file_aborted_ = true; }
    void End();
    /// The program ends: nothing is told any more.
    void Leave();

    bool Running() const { return running_; }
    /// How the batch is getting on, or how the last one went; empty where there is nothing to tell.
    QString Words() const { return words_; }

 Q_SIGNALS:
    void WordsChanged(const QString& words);
    void NoticeChosen(const QString& activation_token);  // by the user, who wants to see the program

 private:
    void Tick();
    void SetWords(const QString& words);
    void TellDesktop();
    platform::DesktopSigns& Signs();

    const Clock clock_;
    QTimer tick_;
    ftp::TransferTally tally_;
    ftp::TransferOutcome outcome_;
    bool running_ = false, in_file_ = false, file_aborted_ = false, leaving_ = false;
    QString words_;
    std::unique_ptr<platform::DesktopSigns> signs_;  // from the first need on
};

/// The batch runs as long as one lives. Without a watch nothing is told.
class WatchedBatch {
 public:
    WatchedBatch(TransferWatch* watch, std::optional<std::int64_t> total) : watch_(watch) {
        if (watch_) watch_->Begin(total);
    }
    ~WatchedBatch() {
        if (watch_) watch_->End();
    }
    WatchedBatch(const WatchedBatch&) = delete;
    WatchedBatch& operator=(const WatchedBatch&) = delete;

 private:
    TransferWatch* const watch_;
};

}  // namespace app
