#include "toolkit/picture_bar.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>

namespace toolkit {
namespace {

class PictureBarTest : public testing::Test {
 protected:
    void SetUp() override {
        p1_.resize(200, 20);
        p2_.SetRole(PictureBox::Role::Filled);
    }

    PictureBox p1_;
    PictureBox p2_{&p1_};
};

TEST_F(PictureBarTest, WidthsAreToldInTwips) {
    EXPECT_EQ(p1_.Width(), 3000);
    EXPECT_EQ(p2_.Width(), 0) << "begins empty";
    const std::pair<double, int> cases[] = {
        {0, 0}, {15, 1}, {1500, 100}, {3000, 200}, {3000 * 0.125, 25}, {1, 0}, {7.4, 0}, {2999, 200},
    };
    for (const auto& [twips, pixels] : cases) {
        p2_.SetWidth(twips);
        EXPECT_EQ(p2_.Width(), twips);
        EXPECT_EQ(p2_.geometry(), QRect(0, 0, pixels, 20)) << twips;
    }
}

TEST_F(PictureBarTest, TheFilledPartStaysWithinTheBar) {
    p2_.SetWidth(4000);
    EXPECT_EQ(p2_.Width(), 3000);
    p2_.SetWidth(-1);
    EXPECT_EQ(p2_.Width(), 0);
}

TEST_F(PictureBarTest, TheFilledPartKeepsItsShare) {
    p1_.show();
    p2_.SetWidth(1500);
    for (const QSize size : {QSize(400, 30), QSize(0, 30), QSize(100, 10)}) {
        p1_.resize(size);
        QCoreApplication::sendPostedEvents();
        EXPECT_EQ(p2_.geometry(), QRect(0, 0, size.width() / 2, size.height()));
        EXPECT_EQ(p2_.Width(), size.width() * 15 / 2.0);
    }
}

TEST_F(PictureBarTest, ABarWithoutWidthTakesNoShare) {
    PictureBox empty;
    empty.resize(0, 20);
    PictureBox filled(&empty);
    filled.SetRole(PictureBox::Role::Filled);
    filled.SetWidth(100);
    EXPECT_EQ(filled.Width(), 0);
}

TEST_F(PictureBarTest, AnEmptyBoxCanBeSized) {
    p1_.SetWidth(150);
    EXPECT_EQ(p1_.width(), 10);
    EXPECT_EQ(p1_.height(), 20);
}

TEST_F(PictureBarTest, TheFillIsPaintedOverItsShareOnly) {
    p1_.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&p1_));
    p2_.SetWidth(p1_.Width() / 2);
    const QImage image = p1_.grab().toImage();
    const QColor highlight = p1_.palette().color(QPalette::Highlight);
    const int y = image.height() / 2;
    EXPECT_EQ(image.pixelColor(image.width() / 4, y), highlight);
    EXPECT_EQ(image.pixelColor(image.width() * 3 / 4, y), p1_.palette().color(QPalette::Base));
}

}  // namespace
}  // namespace toolkit
