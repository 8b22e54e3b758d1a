#include "ftp/transfer_pace.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "ftp/readable.h"

namespace ftp {
namespace {

using namespace std::chrono_literals;
using std::chrono::seconds;

constexpr TransferPace::Time kBetweenSamples{100};
constexpr double kStandingStill = 1;  // bytes a second
constexpr qsizetype kLongestName = 60;

// As exact as an estimate deserves.
seconds Rounded(double value) {
    const seconds whole(std::llround(value));
    const auto to = [whole](seconds step) { return (whole + step / 2) / step * step; };
    if (whole < 10s) return whole;
    if (whole < 1min) return to(5s);
    if (whole < 10min) return to(10s);
    return whole < 1h ? to(1min) : to(5min);
}

QString RestWords(double needed) {
    constexpr double kOneDay = 24.0 * 3600;
    if (needed < 1) return QStringLiteral(", strax klar");
    if (needed > kOneDay) return QStringLiteral(", mer än ett dygn kvar");
    return QStringLiteral(", ungefär %1 kvar").arg(DurationText(Rounded(needed)));
}

QString Pace(double bytes_per_second) {
    constexpr double kMost = 1e18;
    return SizeText(std::llround(std::min(bytes_per_second, kMost))) + QStringLiteral("/s");
}

// No character is cut in two.
QString ShortName(const QString& name) {
    if (name.size() <= kLongestName) return name;
    const qsizetype length = kLongestName - 1;
    return name.left(name[length - 1].isHighSurrogate() ? length - 1 : length) + u'…';
}

std::optional<std::int64_t> Known(std::optional<std::int64_t> bytes) {
    return bytes && *bytes >= 0 && *bytes < kBeyondCounting ? bytes : std::nullopt;
}

QString Duration(std::chrono::milliseconds took) {
    return DurationText(std::max(seconds(1), std::chrono::round<seconds>(took)));
}

QString FilesWords(const TransferOutcome& outcome) {
    const int whole = std::max(outcome.files - outcome.failed, 0);
    if (outcome.failed > 0 && outcome.files > 1)
        return QStringLiteral("%1 av %2 filer").arg(whole).arg(outcome.files);
    if (outcome.files == 1 && !outcome.name.isEmpty()) return ShortName(outcome.name);
    return outcome.files == 1 ? QStringLiteral("1 fil") : QStringLiteral("%1 filer").arg(outcome.files);
}

}  // namespace

std::int64_t Plus(std::int64_t one, std::int64_t other) {
    one = std::max<std::int64_t>(one, 0);
    return one + std::clamp<std::int64_t>(other, 0, kBeyondCounting - one);
}

void TransferPace::Start(Time now) {
    samples_ = {{now, 0}};
}

void TransferPace::Report(Time now, std::int64_t bytes) {
    if (samples_.empty() || bytes < samples_.back().bytes) samples_ = {{now, bytes}};
    const bool too_close = samples_.size() > 1 && now - samples_.back().time < kBetweenSamples;
    if (too_close)
        samples_.back().bytes = bytes;
    else
        samples_.push_back({now, bytes});
    while (samples_.size() > 2 && samples_[1].time <= now - kWindow) samples_.pop_front();
}

std::optional<double> TransferPace::BytesPerSecond(Time now) const {
    if (samples_.empty() || now - samples_.front().time < kShortest) return std::nullopt;
    // What had moved by the beginning of the window.
    auto first = samples_.begin();
    while (std::next(first) != samples_.end() && std::next(first)->time <= now - kWindow) ++first;
    const std::chrono::duration<double> elapsed = std::min(now - first->time, kWindow);
    return static_cast<double>(samples_.back().bytes - first->bytes) / elapsed.count();
}

void TransferTally::Begin(Time now, std::optional<std::int64_t> total) {
    *this = {};
    began_ = now;
    total_ = Known(total);
    pace_.Start(now);
}

void TransferTally::BeginFile(std::optional<std::int64_t> size) {
    ++files_;
    size_ = Known(size);
    current_ = 0;
}

void TransferTally::SetSize(std::int64_t size) {
    if (total_) {
        const std::int64_t others = std::max<std::int64_t>(*total_ - size_.value_or(0), 0);
        total_ = Known(Plus(others, size));
    }
    size_ = Known(size);
}

void TransferTally::Report(Time now, std::int64_t bytes) {
    current_ = std::max<std::int64_t>(bytes, 0);
    pace_.Report(now, Moved());
}

void TransferTally::EndFile() {
    passed_ = Plus(passed_, size_.value_or(current_));
    moved_ = Plus(moved_, std::exchange(current_, 0));
    size_.reset();
}

std::int64_t TransferTally::Passed() const {
    return Plus(passed_, size_ ? std::min(current_, *size_) : current_);
}

bool TransferTally::RestIsKnown() const {
    if (!total_ || *total_ <= 0 || Passed() > *total_) return false;
    const bool outgrown = size_ && current_ > *size_;
    return !outgrown || Passed() < *total_;
}

std::optional<double> TransferTally::Share() const {
    if (!RestIsKnown()) return std::nullopt;
    return static_cast<double>(Passed()) / static_cast<double>(*total_);
}

QString TransferTally::PaceWords(Time now) const {
    return ftp::PaceWords(pace_.BytesPerSecond(now),
                          RestIsKnown() ? std::optional(*total_ - Passed()) : std::nullopt);
}

QString PaceWords(std::optional<double> bytes_per_second, std::optional<std::int64_t> left) {
    if (!bytes_per_second) return QStringLiteral("Överföringen har börjat");
    if (!(*bytes_per_second >= kStandingStill)) return QStringLiteral("Ingenting kommer fram just nu");
    const QString pace = Pace(*bytes_per_second);
    return left ? pace + RestWords(static_cast<double>(*left) / *bytes_per_second) : pace;
}

QString OverallPace(std::int64_t bytes, std::chrono::milliseconds took) {
    const double length = std::max(std::chrono::duration<double>(took).count(), 0.001);
    return QStringLiteral("%1 på %2 (%3)")
        .arg(SizeText(bytes), Duration(took), Pace(static_cast<double>(bytes) / length));
}

QString OutcomeHeading(const TransferOutcome& outcome) {
    if (outcome.aborted) return QStringLiteral("Överföringen är avbruten");
    if (outcome.files > 0 && outcome.failed == outcome.files)
        return QStringLiteral("Överföringen misslyckades");
    const bool clean = outcome.failed == 0 && outcome.troubles == 0;
    return clean ? QStringLiteral("Överföringen är klar") : QStringLiteral("Överföringen är klar, med fel");
}

QString OutcomeWords(const TransferOutcome& outcome) {
    const QString amount = SizeText(outcome.bytes) + QStringLiteral(" på ") + Duration(outcome.took);
    if (outcome.aborted) return amount;
    const bool clean = outcome.failed == 0 && outcome.troubles == 0;
    return FilesWords(outcome) + QStringLiteral(", ") + amount +
           (clean ? QString() : QStringLiteral(". Händelserna berättar om felen."));
}

}  // namespace ftp
