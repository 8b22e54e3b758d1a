#include "toolkit/theme.h"

#include <QPainter>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleOption>

#include "toolkit/accessible.h"

namespace toolkit {
namespace {

constexpr int kAirInRow = 4, kFocusWidth = 2;  // pixels

class Style : public QProxyStyle {
 public:
    Style() : QProxyStyle(QStringLiteral("Fusion")) {}

    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                           const QWidget* widget) const override {
        QSize size = QProxyStyle::sizeFromContents(type, option, contents, widget);
        if (type == CT_ItemViewItem) size.rheight() += kAirInRow;
        return size;
    }

    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override {
        if (metric == PM_MenuPanelWidth) return 1;
        return QProxyStyle::pixelMetric(metric == PM_ListViewIconSize ? PM_SmallIconSize : metric, option,
                                        widget);
    }

    // A long list drops down with a scroll bar and does not cover the screen.
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* result) const override {
        if (hint == SH_ComboBox_Popup) return 0;
        return QProxyStyle::styleHint(hint, option, widget, result);
    }

    // A menu stands out from the list below it, in the dark too.
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override {
        if (element == PE_FrameFocusRect) {
            const bool on_selected = option->state & State_Selected;
            if (option->state & State_KeyboardFocusChange)
                DrawFocus(option, on_selected ? QPalette::HighlightedText : QPalette::Link, painter);
            return;
        }
        if (element != PE_FrameMenu) {
            QProxyStyle::drawPrimitive(element, option, painter, widget);
            if (element == PE_PanelLineEdit && HasFrame(option)) ShowFocus(option, painter);
            return;
        }
        painter->setPen(option->palette.color(QPalette::Disabled, QPalette::WindowText));
        painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
    }

    // A list shows the focus around it, for its current row may be out of sight, and it may have none.
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
        QProxyStyle::drawControl(element, option, painter, widget);
        if (element == CE_ShapedFrame && HasFrame(option)) ShowFocus(option, painter);
        const bool by_keyboard = option->state & State_KeyboardFocusChange;
        if (element == CE_PushButton && by_keyboard) ShowFocus(option, painter);
    }

    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
        if (control == CC_ComboBox) ShowFocus(option, painter);
    }

    // A picture keeps its colours where its row is selected.
    QPixmap generatedIconPixmap(QIcon::Mode mode, const QPixmap& pixmap,
                                const QStyleOption* option) const override {
        return mode == QIcon::Selected ? pixmap : QProxyStyle::generatedIconPixmap(mode, pixmap, option);
    }

 private:
    static bool HasFrame(const QStyleOption* option) {
        const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
        return frame && frame->lineWidth > 0;
    }

    // A field shows where the text goes, also to who has come by the mouse.
    static void ShowFocus(const QStyleOption* option, QPainter* painter) {
        if (option->state & State_HasFocus) DrawFocus(option, QPalette::Link, painter);
    }

    static void DrawFocus(const QStyleOption* option, QPalette::ColorRole role, QPainter* painter) {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing, false);
        painter->setBrush(Qt::NoBrush);
        painter->setPen(
            QPen(option->palette.color(role), kFocusWidth, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
        painter->drawRect(option->rect.adjusted(1, 1, -1, -1));
        painter->restore();
    }
};

struct Colours {
    QRgb window, base, alternate, button, tip;
    QRgb text, disabled_text, placeholder, highlight, highlighted_text, disabled_highlight, link;
    QRgb light, midlight, mid, dark, shadow;
};

constexpr Colours kLight{0xfff2f4f7, 0xffffffff, 0xfff6f8fa, 0xfff7f8fa, 0xffffffe8,  //
                         0xff1a1f26, 0xff8b939d, 0xff68717c, 0xff1f6bb5, 0xffffffff, 0xffb9c3ce,
                         0xff1259a3, 0xffffffff, 0xffe6eaef, 0xffb4bcc6, 0xff98a1ac, 0xff6d7580};

constexpr Colours kDark{0xff30353c, 0xff191c20, 0xff20242a, 0xff424953, 0xff3a4048,  //
                        0xffe9ecf0, 0xff939ba6, 0xffb8c0ca, 0xff2a72bb, 0xffffffff, 0xff4c5561,
                        0xff7db8f5, 0xff565f6a, 0xff474f59, 0xff626c78, 0xff1b1e22, 0xff0e1013};

QPalette PaletteOf(const Colours& colours) {
    QPalette palette;
    const auto set = [&palette](QPalette::ColorRole role, QRgb normal, QRgb disabled) {
        palette.setColor(role, QColor(normal));
        palette.setColor(QPalette::Disabled, role, QColor(disabled));
    };
    const auto set_all = [&set](QPalette::ColorRole role, QRgb colour) { set(role, colour, colour); };
    set_all(QPalette::Window, colours.window);
    set(QPalette::Base, colours.base, colours.window);
    set_all(QPalette::AlternateBase, colours.alternate);
    set_all(QPalette::Button, colours.button);
    set_all(QPalette::ToolTipBase, colours.tip);
    set_all(QPalette::ToolTipText, colours.text);
    set(QPalette::WindowText, colours.text, colours.disabled_text);
    set(QPalette::Text, colours.text, colours.disabled_text);
    set(QPalette::ButtonText, colours.text, colours.disabled_text);
    set(QPalette::PlaceholderText, colours.placeholder, colours.disabled_text);
    set_all(QPalette::BrightText, colours.highlighted_text);
    set(QPalette::Highlight, colours.highlight, colours.disabled_highlight);
    set(QPalette::HighlightedText, colours.highlighted_text, colours.text);
    set_all(QPalette::Link, colours.link);
    set_all(QPalette::LinkVisited, colours.link);
    set_all(QPalette::Light, colours.light);
    set_all(QPalette::Midlight, colours.midlight);
    set_all(QPalette::Mid, colours.mid);
    set_all(QPalette::Dark, colours.dark);
    set_all(QPalette::Shadow, colours.shadow);
    return palette;
}

bool DesktopIsDark() {
    const QByteArray wish = qgetenv("WEBSMIDE_COLOURS");
    if (wish == "light" || wish == "dark") return wish == "dark";
    const QPalette desktop = QGuiApplication::palette();
    return desktop.color(QPalette::Window).lightness() < desktop.color(QPalette::WindowText).lightness();
}

}  // namespace

void ApplyTheme(QApplication& application) {
    const Colours& colours = DesktopIsDark() ? kDark : kLight;
    application.setStyle(new Style);
    application.setPalette(PaletteOf(colours));
    InstallParts();
}

}  // namespace toolkit
