#include "forms/about/about_form.h"

#include <gtest/gtest.h>

#include <QPainter>
#include <QSignalSpy>
#include <QTest>

namespace forms {
namespace {

class About : public ::testing::Test {
 protected:
    void SetUp() override {
        window_.setGeometry(200, 200, 600, 400);
        window_.setWindowIcon(TwoColours());
        window_.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
        Open();
    }

    void Open() {
        box_.Form_Load();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&box_));
    }

    static QIcon TwoColours() {
        QPixmap picture(256, 256);
        picture.fill(Qt::red);
        QPainter(&picture).fillRect(128, 0, 128, 256, Qt::blue);
        return QIcon(picture);
    }

    template <class Widget = QLabel>
    Widget& Get(const char* name) {
        Widget* found = box_.findChild<Widget*>(QString::fromLatin1(name));
        if (!found) throw std::runtime_error(name);
        return *found;
    }

    QWidget window_;
    Form2 box_{window_};
};

TEST_F(About, SaysWhatItIsToTheLetter) {
    EXPECT_EQ(box_.objectName(), "Form2");
    EXPECT_EQ(box_.windowTitle(), "Om..");
    EXPECT_EQ(Get("Label1").text(), "Websmide's FTP program 3.0          Svensk version!");
    EXPECT_EQ(Get("Label1").textFormat(), Qt::PlainText) << "markup would show one blank for ten";
    EXPECT_EQ(Get<QPushButton>("Command1").text(), "&OK");
    EXPECT_TRUE(Get("Label2").text().contains(QStringLiteral("Qt ") + QString::fromLatin1(qVersion())));
    EXPECT_TRUE(Get<QFrame>("Line1").isVisible());
    EXPECT_TRUE(Get<QFrame>("Line2").isVisible());
}

TEST_F(About, ShowsTheMainWindowsIcon) {
    const QImage shown = Get("Image1").grab().toImage();
    const int x = shown.width() / 4, y = shown.height() / 2;
    EXPECT_EQ(shown.pixelColor(x, y), QColor(Qt::red));
    EXPECT_EQ(shown.pixelColor(shown.width() - x, y), QColor(Qt::blue));
    EXPECT_GE(Get("Image1").width(), 64);
}

TEST_F(About, BlocksTheMainWindowWhileItIsOpen) {
    EXPECT_FALSE(window_.isEnabled());
    EXPECT_EQ(box_.windowHandle()->transientParent(), window_.windowHandle());
}

TEST_F(About, OkClosesIt) {
    QTest::mouseClick(&Get<QPushButton>("Command1"), Qt::LeftButton);
    EXPECT_FALSE(box_.isVisible());
    Open();
    QTest::keyClick(box_.windowHandle(), Qt::Key_Return);
    EXPECT_FALSE(box_.isVisible());
}

TEST_F(About, LeadsToTheHelpByMouseAndByKeys) {
    const QSignalSpy wanted(&box_, &Form2::HelpWanted);
    QLabel& line = Get("Label3");
    QTest::mouseClick(&line, Qt::LeftButton, {}, {10, line.height() / 2});
    EXPECT_EQ(wanted.count(), 1);
    Get<QPushButton>("Command1").setFocus();
    QTest::keyClick(box_.windowHandle(), Qt::Key_Tab);
    ASSERT_EQ(box_.focusWidget(), &line);
    QTest::keyClick(box_.windowHandle(), Qt::Key_Return);
    EXPECT_EQ(wanted.count(), 2);
    EXPECT_TRUE(box_.isVisible());
}

TEST_F(About, ClipsNothing) {
    for (const QLabel* label : box_.findChildren<QLabel*>()) {
        EXPECT_GE(label->width(), label->sizeHint().width()) << qUtf8Printable(label->objectName());
        EXPECT_GE(label->height(), label->sizeHint().height()) << qUtf8Printable(label->objectName());
    }
}

}  // namespace
}  // namespace forms
