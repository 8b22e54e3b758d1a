#pragma once
// How quickly a batch of files moves, and how long the rest will take. Pure rules; whoever uses them brings
// the time.

#include <QString>
#include <chrono>
#include <cstdint>
#include <deque>
#include <limits>
#include <optional>

namespace ftp {

/// The largest count of bytes there is. A sum that comes to it is not known.
inline constexpr std::int64_t kBeyondCounting = std::numeric_limits<std::int64_t>::max();

/// The sum of two counts of bytes, kBeyondCounting where it is larger: sizes come from outside, too. What is
/// below 0 counts as 0.
std::int64_t Plus(std::int64_t one, std::int64_t other);

/// The pace over the last seconds, so that neither a burst nor a short stop makes it jump.
class TransferPace {
 public:
    using Time = std::chrono::milliseconds;  // since any beginning; never runs backwards

    static constexpr Time kWindow{5000};
    static constexpr Time kShortest{1000};  // before that nothing is said

    /// Nothing has moved yet.
    void Start(Time now);
    /// So many bytes have moved since the start. Fewer than before: the measuring begins anew.
    void Report(Time now, std::int64_t bytes);
    /// Nothing while it is too early to tell.
    std::optional<double> BytesPerSecond(Time now) const;

 private:
    struct Sample {
        Time time;
        std::int64_t bytes;
    };
    std::deque<Sample> samples_;  // of the window, and one from before it
};

/// The bytes of a batch of files, which follow one another.
class TransferTally {
 public:
    using Time = TransferPace::Time;

    /// `total`: bytes of all files; nothing where that is not known. Here as below, what is below 0 and what
    /// is beyond counting is not known either.
    void Begin(Time now, std::optional<std::int64_t> total);
    void BeginFile(std::optional<std::int64_t> size);
    /// The current file is of this size, whatever was thought before; the total changes with it.
    void SetSize(std::int64_t size);
    /// Bytes of the current file so far.
    void Report(Time now, std::int64_t bytes);
    /// What has not moved by then is not to come any more.
    void EndFile();

    int Files() const { return files_; }                           // begun
    std::int64_t Moved() const { return Plus(moved_, current_); }  // bytes
    /// 0 .. 1 of the total. Nothing, as of the rest, where that is not known: where more has come than the
    /// total, and while the last file has brought more than its size, and goes on.
    std::optional<double> Share() const;
    std::chrono::milliseconds Took(Time now) const { return now - began_; }
    /// "1,4 MB/s, ungefär 2 min 10 s kvar", as far as it is known.
    QString PaceWords(Time now) const;

 private:
    std::int64_t Passed() const;
    bool RestIsKnown() const;

    Time began_{};
    TransferPace pace_;
    std::optional<std::int64_t> total_, size_;
    std::int64_t moved_ = 0, passed_ = 0, current_ = 0;
    int files_ = 0;
};

/// What pace and bytes say to a person; `left` is what is still to come, where that is known.
QString PaceWords(std::optional<double> bytes_per_second, std::optional<std::int64_t> left);

/// What a batch has come to.
struct TransferOutcome {
    int files = 0;         // that have been begun
    int failed = 0;        // of these
    int troubles = 0;      // where something failed and it is not known which file was hit
    bool aborted = false;  // by the user
    std::int64_t bytes = 0;
    std::chrono::milliseconds took{};
    QString name;  // of the only file, as VisibleText: nothing hides in it
};

/// The heading and the text of a notice about it. A long name is shortened. Of an aborted batch nobody knows
/// how many of the files that were begun are whole: only bytes and time are told.
QString OutcomeHeading(const TransferOutcome& outcome);
QString OutcomeWords(const TransferOutcome& outcome);

/// "12,4 MB på 1 min 5 s", with the pace that this comes to.
QString OverallPace(std::int64_t bytes, std::chrono::milliseconds took);

}  // namespace ftp
