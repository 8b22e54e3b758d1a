#include "toolkit/theme.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QFontMetrics>
#include <QImage>
#include <QLineEdit>
#include <QListView>
#include <QPalette>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>
#include <cmath>

#include "toolkit/fonts.h"

namespace toolkit {
namespace {

double Linear(double part) {
    return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

double Luminance(const QColor& colour) {
    return 0.2126 * Linear(colour.redF()) + 0.7152 * Linear(colour.greenF()) +
           0.0722 * Linear(colour.blueF());
}

// By the definition of the W3C's guidelines for readable text, which ask for 4.5.
double Contrast(const QColor& one, const QColor& other) {
    const double a = Luminance(one) + 0.05, b = Luminance(other) + 0.05;
    return std::max(a, b) / std::min(a, b);
}

class ThemeTest : public testing::TestWithParam<const char*> {
 protected:
    void SetUp() override {
        qputenv("WEBSMIDE_COLOURS", GetParam());
        ApplyTheme(*qApp);
    }

    void TearDown() override {
        if (before_.isNull())
            qunsetenv("WEBSMIDE_COLOURS");
        else
            qputenv("WEBSMIDE_COLOURS", before_);
        ApplyTheme(*qApp);
    }

    const QByteArray before_ = qgetenv("WEBSMIDE_COLOURS");
};

TEST_P(ThemeTest, IsLightOrDarkAsAskedFor) {
    const bool dark = QByteArray(GetParam()) == "dark";
    EXPECT_EQ(QApplication::palette().color(QPalette::Window).lightness() < 128, dark);
}

TEST_P(ThemeTest, TextIsReadable) {
    const std::pair<QPalette::ColorRole, QPalette::ColorRole> pairs[] = {
        {QPalette::WindowText, QPalette::Window},
        {QPalette::Text, QPalette::Base},
        {QPalette::Text, QPalette::AlternateBase},
        {QPalette::ButtonText, QPalette::Button},
        {QPalette::HighlightedText, QPalette::Highlight},
        {QPalette::ToolTipText, QPalette::ToolTipBase},
        {QPalette::Text, QPalette::Window},
        {QPalette::WindowText, QPalette::Base},
        {QPalette::PlaceholderText, QPalette::Base},
        {QPalette::Link, QPalette::Base},
        {QPalette::Link, QPalette::Window},
    };
    const QPalette palette = QApplication::palette();
    for (const auto& [text, ground] : pairs)
        EXPECT_GE(Contrast(palette.color(text), palette.color(ground)), 4.5) << text << " on " << ground;
    const QColor disabled = palette.color(QPalette::Disabled, QPalette::ButtonText);
    EXPECT_GE(Contrast(disabled, palette.color(QPalette::Button)), 2.5);
    EXPECT_LT(Contrast(disabled, palette.color(QPalette::Button)), 4.5) << "and yet seen to be disabled";
}

QImage Picture(QWidget& widget) {
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

// The guidelines ask that as many pixels change as a line around the control has, and by a contrast of 3.
void ExpectVisibleFocus(QWidget& control) {
    const auto seen = [](const QColor& one, const QColor& other) {
        return one != other && Contrast(one, other) >= 3;
    };
    ASSERT_FALSE(control.hasFocus());
    const QImage without = Picture(control);
    control.setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(control.hasFocus()) << control.metaObject()->className();
    const QImage with = Picture(control);
    int changed = 0;
    for (int y = 0; y < with.height(); ++y)
        for (int x = 0; x < with.width(); ++x)
            changed += seen(with.pixelColor(x, y), without.pixelColor(x, y));
    EXPECT_GE(changed, with.width() + with.height()) << control.metaObject()->className();
}

TEST_P(ThemeTest, FocusIsSeen) {
    QWidget window;
    auto* rows = new QVBoxLayout(&window);
    rows->addWidget(new QToolButton);  // has the focus first
    auto* choice = new QComboBox;
    choice->addItem(QStringLiteral("C:"));
    auto* edited = new QComboBox;
    edited->setEditable(true);
    const QList<QWidget*> controls{new QPushButton(QStringLiteral("Uppdatera")),
                                   new QLineEdit,
                                   choice,
                                   edited,
                                   new QCheckBox(QStringLiteral("Senast \u00e4ndrad")),
                                   new QListView,
                                   new QTreeView,
                                   new QPlainTextEdit,
                                   new QTextEdit};
    for (QWidget* control : controls) rows->addWidget(control);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    window.setAttribute(Qt::WA_KeyboardFocusChange);  // as after the first Tab
    rows->itemAt(0)->widget()->setFocus();
    for (QWidget* control : controls) ExpectVisibleFocus(*control);
}

INSTANTIATE_TEST_SUITE_P(Colours, ThemeTest, testing::Values("light", "dark"));

TEST(Fonts, TheFixedPitchFontIsFixed) {
    const QFontMetrics metrics(FixedPitchFont());
    EXPECT_EQ(metrics.horizontalAdvance(QString(50, u'i')), metrics.horizontalAdvance(QString(50, u'W')));
    EXPECT_EQ(FixedPitchFont().pointSizeF(), QApplication::font().pointSizeF());
}

}  // namespace
}  // namespace toolkit
