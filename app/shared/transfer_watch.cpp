#include "app/shared/transfer_watch.h"

#include <QApplication>

namespace app {
namespace {

using namespace std::chrono_literals;

constexpr auto kTick = 500ms;
constexpr auto kMoment = 1s;  // a batch that is over sooner needs no bar

std::chrono::milliseconds Monotonic() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
}

}  // namespace

TransferWatch::Clock TransferWatch::clock = &Monotonic;

TransferWatch::TransferWatch(QObject* parent) : QObject(parent), clock_(clock) {
    connect(&tick_, &QTimer::timeout, this, &TransferWatch::Tick);
}

void TransferWatch::Begin(std::optional<std::int64_t> total) {
    End();
    tally_.Begin(clock_(), total);
    outcome_ = {};
    file_aborted_ = false;
    running_ = true;
    tick_.start(kTick);
    SetWords(tally_.PaceWords(clock_()));
}

void TransferWatch::BeginFile(const QString& name, std::optional<std::int64_t> size) {
    tally_.BeginFile(size);
    outcome_.name = name;
    in_file_ = running_;
}

void TransferWatch::SetSize(std::int64_t size) {
    if (in_file_) tally_.SetSize(size);
}

void TransferWatch::Report(std::int64_t bytes) {
    if (in_file_) tally_.Report(clock_(), bytes);
}

void TransferWatch::EndFile() {
    if (std::exchange(in_file_, false)) tally_.EndFile();
}

void TransferWatch::Tick() {
    SetWords(tally_.PaceWords(clock_()));
    const std::optional<double> share = tally_.Share();
    if (leaving_ || !share || tally_.Took(clock_()) < kMoment) return;
    Signs().ShowProgress(*share);
}

void TransferWatch::End() {
    if (!std::exchange(running_, false)) return;
    EndFile();
    tick_.stop();
    outcome_.files = tally_.Files();
    outcome_.bytes = tally_.Moved();
    outcome_.took = tally_.Took(clock_());
    outcome_.aborted = outcome_.aborted || (file_aborted_ && outcome_.files <= 1);
    SetWords(outcome_.aborted || outcome_.bytes == 0 ? QString()
                                                     : ftp::OverallPace(outcome_.bytes, outcome_.took));
    TellDesktop();
}

void TransferWatch::TellDesktop() {
    if (signs_) signs_->HideProgress();
    const bool worth_it = outcome_.files > 0 && outcome_.took > long_batch;
    if (leaving_ || !worth_it || QApplication::activeWindow()) return;
    Signs().Tell(ftp::OutcomeHeading(outcome_), ftp::OutcomeWords(outcome_));
}

void TransferWatch::Leave() {
    leaving_ = true;
    if (signs_) signs_->HideProgress();
}

void TransferWatch::SetWords(const QString& words) {
    if (std::exchange(words_, words) != words) Q_EMIT WordsChanged(words);
}

platform::DesktopSigns& TransferWatch::Signs() {
    if (!signs_) {
        signs_ = std::make_unique<platform::DesktopSigns>();
        connect(signs_.get(), &platform::DesktopSigns::Chosen, this, &TransferWatch::NoticeChosen);
    }
    return *signs_;
}

}  // namespace app
