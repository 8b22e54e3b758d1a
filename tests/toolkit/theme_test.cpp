#include "toolkit/theme.h"

#include <gtest/gtest.h>

#include <QFontMetrics>
#include <QPalette>
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
        {QPalette::Link, QPalette::Base},
    };
    const QPalette palette = QApplication::palette();
    for (const auto& [text, ground] : pairs)
        EXPECT_GE(Contrast(palette.color(text), palette.color(ground)), 4.5) << text << " on " << ground;
    const QColor disabled = palette.color(QPalette::Disabled, QPalette::ButtonText);
    EXPECT_GE(Contrast(disabled, palette.color(QPalette::Button)), 2.5);
    EXPECT_LT(Contrast(disabled, palette.color(QPalette::Button)), 4.5) << "and yet seen to be disabled";
}

INSTANTIATE_TEST_SUITE_P(Colours, ThemeTest, testing::Values("light", "dark"));

TEST(Fonts, TheFixedPitchFontIsFixed) {
    const QFontMetrics metrics(FixedPitchFont());
    EXPECT_EQ(metrics.horizontalAdvance(QString(50, u'i')), metrics.horizontalAdvance(QString(50, u'W')));
    EXPECT_EQ(FixedPitchFont().pointSizeF(), QApplication::font().pointSizeF());
}

}  // namespace
}  // namespace toolkit
