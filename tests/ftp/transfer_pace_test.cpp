#include "ftp/transfer_pace.h"

#include <gtest/gtest.h>

namespace ftp {
namespace {

using namespace std::chrono_literals;

constexpr std::int64_t kMega = 1 << 20;

QString Plain(QString text) {
    return text.replace(QChar::Nbsp, u' ');
}

TEST(TransferPace, SaysNothingAtFirst) {
    TransferPace pace;
    EXPECT_EQ(pace.BytesPerSecond(10s), std::nullopt);
    pace.Start(10s);
    EXPECT_EQ(pace.BytesPerSecond(10s), std::nullopt);
    pace.Report(10s, 5000);  // all at once
    EXPECT_EQ(pace.BytesPerSecond(10s), std::nullopt);
    EXPECT_EQ(pace.BytesPerSecond(10s + 999ms), std::nullopt);
    EXPECT_EQ(pace.BytesPerSecond(11s), 5000);
}

TEST(TransferPace, IsThatOfTheLastSeconds) {
    TransferPace pace;
    pace.Start(0s);
    for (int i = 1; i <= 100; ++i) pace.Report(i * 100ms, i * 100);  // 1000 a second
    EXPECT_DOUBLE_EQ(*pace.BytesPerSecond(10s), 1000);
    for (int i = 1; i <= 50; ++i) pace.Report(10s + i * 100ms, 10'000 + i * 400);
    EXPECT_DOUBLE_EQ(*pace.BytesPerSecond(15s), 4000);
}

TEST(TransferPace, DoesNotJump) {
    TransferPace pace;
    pace.Start(0s);
    for (int i = 1; i <= 100; ++i) pace.Report(i * 100ms, i * 100);
    pace.Report(10s + 50ms, 11'000);  // what a second brings comes at once
    EXPECT_LT(*pace.BytesPerSecond(10s + 50ms), 1250);
}

TEST(TransferPace, FallsToNothingWhileNothingComes) {
    TransferPace pace;
    pace.Start(0s);
    for (int i = 1; i <= 50; ++i) pace.Report(i * 100ms, i * 100);
    EXPECT_DOUBLE_EQ(*pace.BytesPerSecond(5s), 1000);
    EXPECT_NEAR(*pace.BytesPerSecond(8s), 400, 1);
    EXPECT_EQ(*pace.BytesPerSecond(10s), 0);
    EXPECT_EQ(*pace.BytesPerSecond(1h), 0);
}

TEST(TransferPace, BeginsAnewWhereTheCountFalls) {
    TransferPace pace;
    pace.Start(0s);
    pace.Report(2s, 50'000);
    pace.Report(3s, 100);
    EXPECT_EQ(pace.BytesPerSecond(3s), std::nullopt);
    pace.Report(5s, 300);
    EXPECT_DOUBLE_EQ(*pace.BytesPerSecond(5s), 100);
}

TEST(PaceWords, AreNeverNonsense) {
    using Pace = std::optional<double>;
    using Left = std::optional<std::int64_t>;
    struct Row {
        Pace pace;
        Left left;
        const char* words;
    };
    const Row table[] = {
        {{}, {}, "Överföringen har börjat"},
        {{}, 1000, "Överföringen har börjat"},
        {0, 1000, "Ingenting kommer fram just nu"},
        {-3, 1000, "Ingenting kommer fram just nu"},
        {std::nan(""), 1000, "Ingenting kommer fram just nu"},
        {1468006, {}, "1,4 MB/s"},
        {1468006, 190'840'780, "1,4 MB/s, ungefär 2 min 10 s kvar"},
        {1000, 0, "1 000 byte/s, strax klar"},
        {1000, 999, "1 000 byte/s, strax klar"},
        {1000, 1000, "1 000 byte/s, ungefär 1 s kvar"},
        {1000, 57'600, "1 000 byte/s, ungefär 1 min kvar"},
        {1000, 42'000, "1 000 byte/s, ungefär 40 s kvar"},
        {1000, 599'900, "1 000 byte/s, ungefär 10 min kvar"},
        {1000, 1'000'000, "1 000 byte/s, ungefär 17 min kvar"},
        {1000, 3'700'000, "1 000 byte/s, ungefär 1 tim kvar"},
        {1000, 12'000'000, "1 000 byte/s, ungefär 3 tim 20 min kvar"},
        {1, std::numeric_limits<std::int64_t>::max(), "1 byte/s, mer än ett dygn kvar"},
        {1e300, 5, "888,2 PB/s, strax klar"},
    };
    for (const Row& row : table) EXPECT_EQ(Plain(PaceWords(row.pace, row.left)), row.words) << row.words;
}

TEST(TransferTally, CountsTheRestOfAllFiles) {
    TransferTally tally;
    tally.Begin(100s, 10 * kMega);
    EXPECT_EQ(tally.Share(), 0);
    tally.BeginFile(4 * kMega);
    tally.Report(102s, 2 * kMega);
    EXPECT_EQ(Plain(tally.PaceWords(102s)), "1,0 MB/s, ungefär 8 s kvar");
    tally.Report(104s, 4 * kMega);
    tally.EndFile();
    tally.BeginFile(6 * kMega);
    EXPECT_EQ(Plain(tally.PaceWords(104s)), "1,0 MB/s, ungefär 6 s kvar");
    EXPECT_DOUBLE_EQ(*tally.Share(), 0.4);
    tally.Report(105s, kMega);
    tally.Report(110s, 6 * kMega);
    tally.EndFile();
    EXPECT_EQ(tally.Share(), 1);
    EXPECT_EQ(Plain(tally.PaceWords(110s)), "1,0 MB/s, strax klar");
    EXPECT_EQ(tally.Files(), 2);
    EXPECT_EQ(tally.Moved(), 10 * kMega);
    EXPECT_EQ(tally.Took(110s), 10s);
}

// A file that fails half way: what is missing of it is not to come any more, and has not moved either.
TEST(TransferTally, DoesNotWaitForWhatHasFailed) {
    TransferTally tally;
    tally.Begin(0s, 10 * kMega);
    tally.BeginFile(8 * kMega);
    tally.Report(2s, 2 * kMega);
    tally.EndFile();
    tally.BeginFile(2 * kMega);
    EXPECT_EQ(Plain(tally.PaceWords(2s)), "1,0 MB/s, ungefär 2 s kvar");
    EXPECT_DOUBLE_EQ(*tally.Share(), 0.8);
    EXPECT_EQ(tally.Moved(), 2 * kMega);
}

TEST(TransferTally, SaysNothingOfTheRestWhereTheTotalIsWrong) {
    for (const std::optional<std::int64_t> total :
         std::initializer_list<std::optional<std::int64_t>>{{}, 0, -1, kMega}) {
        TransferTally tally;
        tally.Begin(0s, total);
        tally.BeginFile({});
        tally.Report(2s, 2 * kMega);
        EXPECT_EQ(Plain(tally.PaceWords(2s)), "1,0 MB/s");
        EXPECT_EQ(tally.Share(), std::nullopt);
    }
}

TEST(TransferTally, BelievesTheLastWordOnASize) {
    TransferTally tally;
    tally.Begin(0s, 3 * kMega);
    tally.BeginFile(kMega);
    tally.SetSize(2 * kMega);
    tally.Report(2s, 2 * kMega);
    EXPECT_DOUBLE_EQ(*tally.Share(), 0.5);
    tally.Begin(0s, 0);  // of a single file whose size is not known yet
    tally.BeginFile(0);
    tally.Report(1s, kMega);
    EXPECT_EQ(tally.Share(), std::nullopt);
    tally.SetSize(2 * kMega);
    EXPECT_DOUBLE_EQ(*tally.Share(), 0.5);
}

// A file that has grown since it was listed takes no more of the whole than it was to take.
TEST(TransferTally, AFileIsNoLargerThanItsSize) {
    TransferTally tally;
    tally.Begin(0s, 4 * kMega);
    tally.BeginFile(kMega);
    tally.Report(2s, 3 * kMega);
    EXPECT_DOUBLE_EQ(*tally.Share(), 0.25);
}

TEST(TransferTally, DoesNotKnowTheRestOfAFileThatHasOutgrownItsSize) {
    TransferTally tally;
    tally.Begin(0s, 3 * kMega);
    tally.BeginFile(2 * kMega);
    tally.Report(2s, 4 * kMega);  // the other file is still to come
    EXPECT_DOUBLE_EQ(*tally.Share(), 2.0 / 3);
    tally.EndFile();
    tally.BeginFile(kMega);
    tally.Report(4s, kMega);
    EXPECT_EQ(tally.Share(), 1);
    tally.Report(4s, kMega + 1);
    EXPECT_EQ(tally.Share(), std::nullopt);
    EXPECT_EQ(Plain(tally.PaceWords(4s)), "1,3 MB/s");
    tally.EndFile();
    EXPECT_EQ(tally.Share(), 1);
}

TEST(TransferTally, CountsNoFurtherThanItCan) {
    constexpr std::int64_t huge = 9'000'000'000'000'000'000;
    EXPECT_EQ(Plus(2, 3), 5);
    EXPECT_EQ(Plus(huge, huge), kBeyondCounting);
    EXPECT_EQ(Plus(kBeyondCounting, 0), kBeyondCounting);
    EXPECT_EQ(Plus(-1, 3), 3);
    EXPECT_EQ(Plus(3, std::numeric_limits<std::int64_t>::min()), 3);
    TransferTally tally;
    tally.Begin(0s, Plus(huge, huge));
    for (int i = 0; i < 2; ++i) {
        tally.BeginFile(huge);
        tally.Report(2s, huge);
        EXPECT_EQ(tally.Share(), std::nullopt);
        tally.EndFile();
    }
    EXPECT_EQ(tally.Moved(), kBeyondCounting);
    tally.Begin(0s, huge);  // until another size is stated
    tally.BeginFile(kMega);
    EXPECT_EQ(tally.Share(), 0);
    tally.SetSize(huge);
    EXPECT_EQ(tally.Share(), std::nullopt);
}

TEST(TransferTally, BelievesInNoNegativeSizes) {
    TransferTally tally;
    tally.Begin(0s, 4 * kMega);
    tally.BeginFile(-kMega);
    tally.Report(2s, kMega);
    EXPECT_DOUBLE_EQ(*tally.Share(), 0.25);
    tally.SetSize(std::numeric_limits<std::int64_t>::min());
    EXPECT_DOUBLE_EQ(*tally.Share(), 0.25);
}

TEST(Outcome, TellsTheTruth) {
    struct Row {
        TransferOutcome outcome;
        const char *heading, *words;
    };
    const Row table[] = {
        {{.files = 3, .bytes = 13'002'342, .took = 65s, .name = "a"},
         "Överföringen är klar",
         "3 filer, 12,4 MB på 1 min 5 s"},
        {{.files = 1, .bytes = 100, .took = 31s, .name = "bild.png"},
         "Överföringen är klar",
         "bild.png, 100 byte på 31 s"},
        {{.files = 1, .bytes = 100, .took = 31s, .name = {}},
         "Överföringen är klar",
         "1 fil, 100 byte på 31 s"},
        {{.files = 3, .failed = 1, .bytes = 100, .took = 31s, .name = {}},
         "Överföringen är klar, med fel",
         "2 av 3 filer, 100 byte på 31 s. Händelserna berättar om felen."},
        {{.files = 3, .failed = 3, .bytes = 0, .took = 31s, .name = {}},
         "Överföringen misslyckades",
         "0 av 3 filer, 0 byte på 31 s. Händelserna berättar om felen."},
        {{.files = 1, .failed = 1, .bytes = 0, .took = 31s, .name = "x"},
         "Överföringen misslyckades",
         "x, 0 byte på 31 s. Händelserna berättar om felen."},
        {{.files = 9, .troubles = 2, .bytes = 5, .took = 31s, .name = {}},
         "Överföringen är klar, med fel",
         "9 filer, 5 byte på 31 s. Händelserna berättar om felen."},
        {{.files = 2, .aborted = true, .bytes = 5, .took = 31s, .name = {}},
         "Överföringen är avbruten",
         "5 byte på 31 s"},
        {{.files = 1, .failed = 1, .aborted = true, .bytes = 5, .took = 31s, .name = "x"},
         "Överföringen är avbruten",
         "5 byte på 31 s"},
        {{.files = 1, .bytes = 5, .took = 31s, .name = u"<b>‹U+202E›␊"_qs + QString(100, 'x')},
         "Överföringen är klar",
         "<b>‹U+202E›␊xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx…, 5 byte på 31 s"},
        {{.files = 1, .bytes = 5, .took = 31s, .name = QString(58, 'x') + u"\U0001F600yy"_qs},
         "Överföringen är klar",
         "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx…, 5 byte på 31 s"},
    };
    for (const Row& row : table) {
        EXPECT_EQ(OutcomeHeading(row.outcome), row.heading);
        EXPECT_EQ(Plain(OutcomeWords(row.outcome)), row.words);
    }
}

TEST(OverallPace, TellsHowItWent) {
    EXPECT_EQ(Plain(OverallPace(10 * kMega, 10s)), "10,0 MB på 10 s (1,0 MB/s)");
    EXPECT_EQ(Plain(OverallPace(100, 0s)), "100 byte på 1 s (97,7 kB/s)");
}

}  // namespace
}  // namespace ftp
