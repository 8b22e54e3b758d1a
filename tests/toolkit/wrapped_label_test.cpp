#include "toolkit/wrapped_label.h"

#include <gtest/gtest.h>

#include <QTest>
#include <QVBoxLayout>

namespace toolkit {
namespace {

class FlowingLabelTest : public ::testing::Test {
 protected:
    void SetUp() override {
        (new QVBoxLayout(&window_))->addWidget(label_);
        window_.resize(300, 100);
        window_.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_));
    }
    bool HasItsHeight() {
        return QTest::qWaitFor([this] { return label_->height() >= label_->minimumSizeHint().height(); });
    }
    int Lines() const { return label_->minimumSizeHint().height() / label_->fontMetrics().height(); }

    QWidget window_;
    FlowingLabel* label_ = new FlowingLabel(&window_);
};

TEST_F(FlowingLabelTest, TakesTheLinesThatItNeeds) {
    label_->setText("kort");
    EXPECT_EQ(Lines(), 1);
    label_->setText(QString("några ord ").repeated(40));
    EXPECT_GT(Lines(), 5);
    ASSERT_TRUE(HasItsHeight());
    EXPECT_EQ(window_.width(), 300);
    const int lines = Lines();
    window_.resize(600, 300);
    ASSERT_TRUE(QTest::qWaitFor([&] { return Lines() < lines; }));
    window_.resize(200, 10);
    ASSERT_TRUE(QTest::qWaitFor([&] { return Lines() > lines; }));
    ASSERT_TRUE(HasItsHeight());
}

TEST_F(FlowingLabelTest, BreaksAWordThatIsTooLong) {
    label_->setText(QString(400, 'w'));
    EXPECT_GT(Lines(), 5);
    ASSERT_TRUE(HasItsHeight());
    EXPECT_EQ(window_.width(), 300);
}

TEST_F(FlowingLabelTest, ShowsMarkupAsWritten) {
    label_->setText("<b>");
    EXPECT_EQ(label_->textFormat(), Qt::PlainText);
    const auto ink = [this] { return label_->grab().toImage(); };
    const QImage markup = ink();
    label_->setText("");
    EXPECT_NE(markup, ink());
}

}  // namespace
}  // namespace toolkit
