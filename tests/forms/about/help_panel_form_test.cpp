#include "forms/about/help_panel_form.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCloseEvent>
#include <QScreen>
#include <QSet>
#include <QTest>
#include <QTimer>
#include <QWindow>
#include <utility>

#include "forms/about/about_form.h"
#include "ftp/operation_gate.h"

namespace forms {
namespace {

struct Place {
    QRect window;
    QSize panel;
    QRect screen;
    QPoint place;
};

// 250 twips are 16 2/3 pixels, 3500 are 233 1/3.
TEST(PlaceOfHelpPanel, IsTheMainWindowsLowerLeftCornerOnTheScreen) {
    const QSize panel(430, 240);
    const QRect screen(0, 0, 1280, 1024), left_screen(-1280, 30, 1280, 994);
    const Place table[] = {
        {{100, 100, 760, 560}, panel, screen, {117, 427}},
        {{0, 0, 615, 513}, panel, screen, {17, 280}},
        {{-1000, 100, 760, 560}, panel, left_screen, {-983, 427}},
        {{-10, 100, 760, 560}, panel, screen, {7, 427}},
        {{-300, 100, 760, 560}, panel, screen, {0, 427}},          // out at the left
        {{1000, 100, 760, 560}, panel, screen, {850, 427}},        // at the right
        {{-400, 100, 760, 560}, panel, left_screen, {-430, 427}},  // at the right of that screen
        {{100, 0, 760, 200}, panel, screen, {117, 0}},             // at the top
        {{100, 40, 760, 200}, panel, left_screen, {-430, 30}},     // below a bar at the top
        {{100, 500, 760, 560}, panel, screen, {117, 784}},         // at the bottom
        {{100, 100, 760, 560}, {1400, 1100}, screen, {0, 0}},      // larger than the screen
    };
    for (const Place& row : table) EXPECT_EQ(PlaceOfHelpPanel(row.window, row.panel, row.screen), row.place);
}

class HelpPanel : public ::testing::Test {
 protected:
    void SetUp() override {
        window_.setGeometry(200, 150, 700, 600);
        window_.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
        ASSERT_TRUE(QTest::qWaitFor([this] { return window_.frameGeometry() != window_.geometry(); }));
    }

    void MoveMainWindow(const QRect& geometry) {
        window_.setGeometry(geometry);
        ASSERT_TRUE(QTest::qWaitFor([&] { return window_.geometry() == geometry; }));
    }

    void Show() {
        panel_.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&panel_));
    }

    /// As the window manager does.
    void PressCloseBox() {
        QCloseEvent close;
        QApplication::sendEvent(panel_.windowHandle(), &close);
        ASSERT_FALSE(panel_.isVisible());
    }

    /// Once the window manager has put its frame around the panel.
    bool ComesToStandAt(QPoint place) {
        return QTest::qWaitFor([&] {
            return panel_.frameGeometry() != panel_.geometry() && panel_.frameGeometry().topLeft() == place;
        });
    }

    QPoint LowerLeftCorner() const {
        const QRect frame = window_.frameGeometry();
        return {frame.left() + 17, frame.top() + frame.height() - 233};
    }

    QLabel& Get(const char* name) {
        QLabel* found = panel_.findChild<QLabel*>(QString::fromLatin1(name));
        if (!found) throw std::runtime_error(name);
        return *found;
    }

    QWidget window_;
    Form4 panel_{window_};
};

TEST_F(HelpPanel, TellsThreeStepsToTheLetter) {
    EXPECT_EQ(panel_.objectName(), "Form4");
    EXPECT_EQ(panel_.windowTitle(), "1-2-3 så skickar du upp dina filer!");
    EXPECT_EQ(Get("Label4_0").text(), "Ny förbindelse");
    EXPECT_EQ(Get("Label4_1").text(), "Skicka över filer");
    EXPECT_EQ(Get("Label4_2").text(), "Stäng förbindelse");
    EXPECT_EQ(Get("Label1").text(),
              "Tryck på \"Ny förbindelse...\" och mata in de uppgifter som tillhör ditt FTP-konto.");
    EXPECT_EQ(Get("Label2").text(),
              "Invänta tills programmet kopplat upp och markera sedan de filer som du vill skicka över. "
              "Tryck därefter på \"Ladda upp fil(er) till Server\".");
    EXPECT_EQ(Get("Label3").text(),
              "Tryck till sist på \"Stäng förbindelse\". Avsluta sedan programmet eller påbörja en ny "
              "förbindelse.");
    EXPECT_EQ(Get("number_1").text(), "1");
    EXPECT_EQ(Get("number_2").text(), "2");
    EXPECT_EQ(Get("number_3").text(), "3");
}

TEST_F(HelpPanel, HasAPicture) {
    const QImage picture = Get("Image3").pixmap().toImage();
    QSet<QRgb> colours;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) colours.insert(picture.pixel(x, y));
    EXPECT_GT(colours.size(), 8);
}

TEST_F(HelpPanel, IsPlacedWhenItIsLoadedAndNotShownYet) {
    panel_.Form_Load();
    EXPECT_FALSE(panel_.isVisible());
    EXPECT_EQ(panel_.pos(), LowerLeftCorner());
    EXPECT_EQ(panel_.windowHandle()->transientParent(), window_.windowHandle());
}

TEST_F(HelpPanel, StandsInTheLowerLeftCornerOfTheMainWindow) {
    for (const QRect& geometry :
         {QRect(200, 150, 700, 600), QRect(61, 43, 615, 513), QRect(500, 301, 700, 655)}) {
        MoveMainWindow(geometry);
        panel_.Form_Load();
        Show();
        EXPECT_TRUE(ComesToStandAt(LowerLeftCorner())) << geometry.left();
        panel_.hide();
    }
}

TEST_F(HelpPanel, IsWhollyOnTheScreenWhereTheMainWindowIsNot) {
    const QRect screen = window_.screen()->availableGeometry();
    for (const QRect& geometry : {QRect(1000, 150, 700, 600), QRect(-300, 150, 700, 600),
                                  QRect(200, 40, 700, 100), QRect(200, 900, 700, 600)}) {
        MoveMainWindow(geometry);
        panel_.Form_Load();
        Show();
        ASSERT_TRUE(QTest::qWaitFor([this] { return panel_.frameGeometry() != panel_.geometry(); }));
        EXPECT_TRUE(screen.contains(panel_.frameGeometry())) << geometry.left() << "," << geometry.top();
        panel_.hide();
    }
}

TEST_F(HelpPanel, KeepsItsPlaceWhenTheMainWindowMoves) {
    panel_.Form_Load();
    Show();
    const QPoint place = LowerLeftCorner();
    ASSERT_TRUE(ComesToStandAt(place));
    MoveMainWindow({300, 100, 700, 600});
    EXPECT_EQ(panel_.frameGeometry().topLeft(), place);
    panel_.hide();
    Show();
    EXPECT_TRUE(ComesToStandAt(place));
    PressCloseBox();
    Show();
    EXPECT_TRUE(ComesToStandAt(place));
    panel_.Form_Load();
    EXPECT_TRUE(ComesToStandAt(LowerLeftCorner())) << "loaded anew it follows";
}

TEST_F(HelpPanel, StaysWhereTheUserHasPutIt) {
    panel_.Form_Load();
    Show();
    ASSERT_TRUE(ComesToStandAt(LowerLeftCorner()));
    panel_.move(600, 77);
    ASSERT_TRUE(ComesToStandAt({600, 77}));
    for (int i = 0; i < 3; ++i) {
        PressCloseBox();
        Show();
        EXPECT_TRUE(ComesToStandAt({600, 77})) << i;
    }
}

TEST_F(HelpPanel, BelongsToTheMainWindowWheneverItIsShown) {
    panel_.Form_Load();
    Show();
    EXPECT_EQ(panel_.windowType(), Qt::Tool);
    EXPECT_EQ(panel_.windowHandle()->transientParent(), window_.windowHandle());
    PressCloseBox();
    EXPECT_EQ(panel_.windowHandle()->transientParent(), nullptr);
    Show();
    EXPECT_EQ(panel_.windowHandle()->transientParent(), window_.windowHandle());
}

// The window that is shown after the panel gets the focus after it, too.
TEST_F(HelpPanel, LeavesTheFocusToTheMainWindow) {
    bool had_focus = false;
    QObject::connect(qApp, &QGuiApplication::focusWindowChanged, &panel_,
                     [&](QWindow* focused) { had_focus |= focused && focused == panel_.windowHandle(); });
    panel_.Form_Load();
    Show();
    ASSERT_TRUE(ComesToStandAt(LowerLeftCorner()));
    QWidget next;
    next.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&next));
    EXPECT_FALSE(had_focus);
}

TEST_F(HelpPanel, IsHiddenByEscapeAlsoDuringAnOperation) {
    panel_.Form_Load();
    Show();
    const ftp::OperationGate gate;
    QTest::keyClick(panel_.windowHandle(), Qt::Key_A);
    EXPECT_TRUE(panel_.isVisible());
    QTest::keyClick(panel_.windowHandle(), Qt::Key_Escape);
    EXPECT_FALSE(panel_.isVisible());
}

TEST_F(HelpPanel, CanBeUsedWhileADialogHoldsTheMainWindow) {
    panel_.Form_Load();
    Show();
    Form2 dialog(window_);
    dialog.Form_Load();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    EXPECT_FALSE(window_.isEnabled());
    EXPECT_TRUE(panel_.isVisible());
    QTest::keyClick(panel_.windowHandle(), Qt::Key_Escape);
    EXPECT_FALSE(panel_.isVisible());
    dialog.close();
}

// At the program's end it is there, and must not be what keeps the program alive.
TEST_F(HelpPanel, DoesNotOutlastTheMainWindow) {
    panel_.Form_Load();
    Show();
    QApplication::setQuitOnLastWindowClosed(true);
    QTimer::singleShot(0, &window_, &QWidget::close);
    QTimer::singleShot(10'000, &window_, [] { QApplication::exit(1); });
    EXPECT_EQ(QApplication::exec(), 0);
    QApplication::setQuitOnLastWindowClosed(false);
}

TEST_F(HelpPanel, GrowsWithTheFont) {
    panel_.Form_Load();
    Show();
    QSize before;
    int picture = 0, explanation = 0;
    for (const int points : {8, 11, 16}) {
        QFont font = panel_.font();
        font.setPointSize(points);
        panel_.setFont(font);
        ASSERT_TRUE(QTest::qWaitFor([&] {
            return panel_.width() > before.width() && panel_.height() > before.height() &&
                   panel_.size() == panel_.layout()->totalSizeHint();
        })) << points;
        before = panel_.size();
        EXPECT_GT(Get("Image3").pixmap().height(), std::exchange(picture, Get("Image3").pixmap().height()));
        EXPECT_GT(Get("Label2").width(), std::exchange(explanation, Get("Label2").width()));
        for (const QLabel* label : panel_.findChildren<QLabel*>()) {
            const int needed =
                label->wordWrap() ? label->heightForWidth(label->width()) : label->sizeHint().height();
            EXPECT_GE(label->height(), needed) << points << qUtf8Printable(label->objectName());
            EXPECT_GE(label->width(), label->minimumSizeHint().width())
                << points << qUtf8Printable(label->objectName());
        }
    }
}

}  // namespace
}  // namespace forms
