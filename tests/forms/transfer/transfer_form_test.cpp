#include "forms/transfer/transfer_form.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCloseEvent>
#include <QTest>

#include "app/shared/ftpglob.h"
#include "tests/support/box_answerer.h"

using toolkit_test::ExpectBox;

namespace forms {
namespace {

struct Caption {
    QString bytes, size, percent, text;
};

TEST(TransferCaption, NamesBytesTotalAndPercentage) {
    const Caption table[] = {
        {"20480", "48213", "42 %", "Överfört: 20480 av 48213  42 %"},
        {"20480", "48213 ", "42 %", "Överfört: 20480 av 48213  42 %"},
        {"7", "  9 ", "78 %", "Överfört: 7 av 9  78 %"},
        {"0", "0", "0 %", "Överfört: 0 av 0  0 %"},
    };
    for (const Caption& row : table) EXPECT_EQ(TransferCaption(row.bytes, row.size, row.percent), row.text);
}

class TransferWindow : public ::testing::Test {
 protected:
    void SetUp() override {
        app::Globals() = {};
        listdir2_.setEnabled(false);
        QObject::connect(&ftp1_, &ftp::Component::BusyChanged, [this] { touched_ = true; });
        QObject::connect(&ftp1_, &ftp::Component::Error, [this] { touched_ = true; });
        window_.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
    }

    ftp::Component ftp1_;
    QWidget window_;
    toolkit::ListBox list_dir_{&window_};
    toolkit::ListView listdir2_{&window_};
    toolkit::DirListBox dir1_{&window_};
    QPushButton avb_{&window_};
    QLabel antal_{QStringLiteral("42 %"), &window_}, label7_{&window_};
    toolkit::PictureBox p2_{&window_};
    bool touched_ = false;
    Form1 form_{{window_, ftp1_, list_dir_, listdir2_, dir1_, avb_, antal_, label7_, p2_, {}}};
};

TEST_F(TransferWindow, WithNothingSelectedItClosesAtOnce) {
    list_dir_.AddItem(QStringLiteral("-rw-r--r-- 1 u g 3 Jan 1 10:00 b.txt"));
    for (std::int16_t* running : {&app::Globals().UploadRunning, &app::Globals().DownloadRunning}) {
        app::Globals().UploadRunning = app::Globals().DownloadRunning = 0;
        *running = 1;
        listdir2_.setEnabled(false);
        form_.Form_Load();
        EXPECT_FALSE(form_.isVisible());
        EXPECT_TRUE(listdir2_.isEnabled());
        EXPECT_FALSE(touched_);
    }
}

// Without a direction there is no batch, and the window stays.
TEST_F(TransferWindow, ShowsTheCountInItsTitle) {
    form_.Form_Load();
    ASSERT_TRUE(form_.isVisible());
    EXPECT_EQ(form_.windowTitle(), "Överfört: ");
    ASSERT_TRUE(QTest::qWaitFor([this] { return form_.windowTitle() == "Överfört: 0 av 0  42 %"; }));
    EXPECT_EQ(app::Globals().FileSizeText, "0");
    EXPECT_EQ(label7_.text(), "0");
    label7_.setText("20480");
    app::Globals().FileSizeText = "48213 ";
    ASSERT_TRUE(QTest::qWaitFor([this] { return form_.windowTitle() == "Överfört: 20480 av 48213  42 %"; }));
}

TEST_F(TransferWindow, IsOwnedByTheMainWindowWhileItIsOpen) {
    form_.Form_Load();
    EXPECT_EQ(form_.objectName(), "Form1");
    EXPECT_EQ(form_.windowHandle()->transientParent(), window_.windowHandle());
    form_.close();
    EXPECT_EQ(form_.windowHandle()->transientParent(), nullptr);
    EXPECT_TRUE(listdir2_.isEnabled());
}

// Escape and the close box of the window ask as the button does.
TEST_F(TransferWindow, AsksBeforeItAborts) {
    form_.Form_Load();
    ASSERT_TRUE(QTest::qWaitFor([this] { return QApplication::activeWindow() == &form_; }));
    auto* button = form_.findChild<QPushButton*>("Command1");
    const std::function<void()> ways[] = {
        [&] { QTest::mouseClick(button, Qt::LeftButton); },
        [&] { QTest::keyClick(&form_, Qt::Key_Escape); },
        [&] {  // as the window manager does
            QCloseEvent close;
            QApplication::sendEvent(form_.windowHandle(), &close);
        },
    };
    for (const auto& ask : ways) {
        antal_.setText("42 %");
        {
            ExpectBox no("Avbryt överföring!", "Vill du avbryta överföringen ?", "cmdNo");
            ask();
        }
        EXPECT_EQ(antal_.text(), "42 %");
        {
            ExpectBox yes("Avbryt överföring!", "Vill du avbryta överföringen ?", "cmdYes");
            ask();
        }
        EXPECT_EQ(antal_.text(), "0 %");
        EXPECT_TRUE(form_.isVisible());
    }
}

}  // namespace
}  // namespace forms
