// The focus can be seen, and what is written can be read, in light and dark colours.

#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QSplitterHandle>

#include "forms/transfer/queue_model.h"
#include "tests/accessibility/contrast.h"
#include "tests/accessibility/windows.h"
#include "toolkit/theme.h"

namespace forms {
namespace {

constexpr double kForText = 4.5, kForShapes = 3;

void UseColours(const char* colours) {
    qputenv("WEBSMIDE_COLOURS", colours);
    toolkit::ApplyTheme(*qApp);
}

class Sight : public Windows {
 protected:
    void TearDown() override {
        Windows::TearDown();
        if (before_.isNull())
            qunsetenv("WEBSMIDE_COLOURS");
        else
            qputenv("WEBSMIDE_COLOURS", before_);
        toolkit::ApplyTheme(*qApp);
    }

    const QByteArray before_ = qgetenv("WEBSMIDE_COLOURS");
};

class SightOfFocus : public Sight {};
INSTANTIATE_TEST_SUITE_P(Windows, SightOfFocus, EveryWindow(), NameOfWindow);

QImage Picture(QWidget& widget) {
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

// How many pixels stand out from what they were.
int Different(const QImage& one, const QImage& other) {
    int count = 0;
    for (int y = 0; y < one.height(); ++y)
        for (int x = 0; x < one.width(); ++x)
            if (one.pixel(x, y) != other.pixel(x, y) &&
                Contrast(one.pixelColor(x, y), other.pixelColor(x, y)) >= kForShapes)
                ++count;
    return count;
}

void ExpectVisibleFocus(QWidget& stop, QWidget& elsewhere, const char* colours) {
    elsewhere.setFocus(Qt::TabFocusReason);
    const QImage without = Picture(stop);
    stop.setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(stop.hasFocus()) << Describe(stop);
    const QImage with = Picture(stop);
    ASSERT_EQ(with.size(), without.size());
    // At least a line along half of the control's border.
    EXPECT_GE(Different(with, without), stop.width() + stop.height()) << colours << ": " << Describe(stop);
}

TEST_P(SightOfFocus, StandsOutFromWhatIsWithoutIt) {
    for (const char* colours : {"light", "dark"}) {
        UseColours(colours);
        Visit([colours](QWidget& window) {
            EnableAll(window);
            window.setAttribute(Qt::WA_KeyboardFocusChange);  // as after the first Tab
            const QList<QWidget*> stops = TabStopsOf(window);
            for (int i = 0; stops.size() > 1 && i < stops.size(); ++i)
                ExpectVisibleFocus(*stops[i], *stops[i == 0 ? 1 : 0], colours);
            for (auto* handle : window.findChildren<QSplitterHandle*>())
                if (handle->isVisible()) ExpectVisibleFocus(*handle, *stops[0], colours);
        });
    }
}

class SightOfText : public Sight {};
INSTANTIATE_TEST_SUITE_P(Windows, SightOfText, EveryWindow(), NameOfWindow);

// The best contrast between any two colours of the picture, the more frequent one being the ground.
double BestContrast(const QImage& picture) {
    QHash<QRgb, int> count;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) ++count[picture.pixel(x, y)];
    const auto ground = std::max_element(count.begin(), count.end());
    double best = 0;
    for (auto colour = count.begin(); colour != count.end(); ++colour)
        best = std::max(best, Contrast(QColor(colour.key()), QColor(ground.key())));
    return best;
}

TEST_P(SightOfText, EveryLabelAndButtonCanBeRead) {
    for (const char* colours : {"light", "dark"}) {
        UseColours(colours);
        Visit([colours](QWidget& window) {
            for (QWidget* widget : window.findChildren<QWidget*>()) {
                const auto* label = qobject_cast<QLabel*>(widget);
                const auto* button = qobject_cast<QPushButton*>(widget);
                const bool shows = widget->isVisible() && widget->isEnabled() && !widget->size().isEmpty();
                const bool written = (label && label->text().trimmed().size() > 1) || button;
                if (!shows || !written) continue;
                // A button without words has a picture.
                const double wanted = button && button->text().isEmpty() ? kForShapes : kForText;
                const QRect inside = button ? widget->rect().adjusted(4, 4, -4, -4) : widget->rect();
                EXPECT_GE(BestContrast(Picture(*widget).copy(inside)), wanted)
                    << colours << ": " << Describe(*widget);
            }
        });
    }
}

// A file of the queue is on its way in the row that is selected.
TEST_F(MainWindow, PicturesOfTheQueueStandOutFromTheirRows) {
    Open();
    const QueueModel model;  // brings the pictures along
    const QByteArray before = qgetenv("WEBSMIDE_COLOURS");
    for (const char* colours : {"light", "dark"})
        for (const char* name : {"waiting", "running", "done", "failed"}) {
            UseColours(colours);
            for (const auto role : {QPalette::Base, QPalette::AlternateBase, QPalette::Highlight}) {
                if (name == std::string("waiting") && role == QPalette::Highlight) continue;
                const QColor ground = QApplication::palette().color(role);
                QImage row(16, 16, QImage::Format_RGB32);
                row.fill(ground);
                QPainter painter(&row);
                QIcon(QStringLiteral(":/transfer/%1.svg").arg(QLatin1String(name)))
                    .paint(&painter, row.rect());
                int seen = 0;
                for (int i = 0; i < 16 * 16; ++i)
                    seen += Contrast(row.pixelColor(i % 16, i / 16), ground) >= kForShapes;
                EXPECT_GE(seen, 16) << colours << ' ' << name << " on " << role;
            }
        }
    before.isNull() ? qunsetenv("WEBSMIDE_COLOURS") : qputenv("WEBSMIDE_COLOURS", before);
    toolkit::ApplyTheme(*qApp);
}

class SightOfColours : public ::testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(Colours, SightOfColours, ::testing::Values("light", "dark"));

TEST_P(SightOfColours, EveryRoleStandsOutFromItsGrounds) {
    const QByteArray before = qgetenv("WEBSMIDE_COLOURS");
    UseColours(GetParam());
    const QPalette palette = QApplication::palette();
    struct Pair {
        QPalette::ColorRole text, ground;
        double wanted;
    };
    const Pair pairs[] = {
        {QPalette::WindowText, QPalette::Window, kForText},
        {QPalette::WindowText, QPalette::Base, kForText},
        {QPalette::Text, QPalette::Base, kForText},
        {QPalette::Text, QPalette::AlternateBase, kForText},
        {QPalette::Text, QPalette::Window, kForText},
        {QPalette::ButtonText, QPalette::Button, kForText},
        {QPalette::PlaceholderText, QPalette::Base, kForText},
        {QPalette::PlaceholderText, QPalette::Button, kForText},
        {QPalette::HighlightedText, QPalette::Highlight, kForText},
        {QPalette::ToolTipText, QPalette::ToolTipBase, kForText},
        {QPalette::Link, QPalette::Base, kForText},
        {QPalette::Link, QPalette::Window, kForText},
        {QPalette::LinkVisited, QPalette::Window, kForText},
        {QPalette::Link, QPalette::Button, kForShapes},  // the focus
        {QPalette::Highlight, QPalette::Base, kForShapes},
    };
    for (const auto& [text, ground, wanted] : pairs)
        for (const auto group : {QPalette::Active, QPalette::Inactive})
            EXPECT_GE(Contrast(palette.color(group, text), palette.color(group, ground)), wanted)
                << text << " on " << ground;
    before.isNull() ? qunsetenv("WEBSMIDE_COLOURS") : qputenv("WEBSMIDE_COLOURS", before);
    toolkit::ApplyTheme(*qApp);
}

}  // namespace
}  // namespace forms
