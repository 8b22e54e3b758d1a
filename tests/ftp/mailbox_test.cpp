#include "ftp/mailbox.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

namespace ftp {
namespace {

TEST(Mailbox, KeepsTheOrderAndWakesOnce) {
    Mailbox<int> box;
    std::deque<int> taken = {0};
    EXPECT_TRUE(box.Put(1));
    EXPECT_FALSE(box.Put(2));
    EXPECT_FALSE(box.Put(3));
    box.TakeAll(taken);
    EXPECT_EQ(taken, (std::deque{0, 1, 2, 3}));
    box.TakeAll(taken);
    EXPECT_EQ(taken.size(), 4u);
    EXPECT_TRUE(box.Put(4));
}

TEST(Mailbox, LosesNothingBetweenThreads) {
    constexpr int kCount = 20'000;
    Mailbox<std::pair<int, int>> box;
    std::vector<std::thread> writers;
    for (int writer : {0, 1}) {
        writers.emplace_back([&box, writer] {
            for (int i = 0; i < kCount; ++i) box.Put({writer, i});
        });
    }
    std::deque<std::pair<int, int>> taken;
    while (taken.size() < 2 * kCount) box.TakeAll(taken);
    for (std::thread& writer : writers) writer.join();
    int next[2] = {};
    for (const auto& [writer, value] : taken) ASSERT_EQ(value, next[writer]++);
}

TEST(Mailbox, DropsWhatNobodyTook) {
    const auto letter = std::make_shared<int>();
    {
        Mailbox<std::shared_ptr<int>> box;
        box.Put(letter);
        box.Put(letter);
        EXPECT_EQ(letter.use_count(), 3);
    }
    EXPECT_EQ(letter.use_count(), 1);
}

}  // namespace
}  // namespace ftp
