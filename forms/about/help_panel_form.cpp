#include "forms/about/help_panel_form.h"

#include <QCloseEvent>
#include <QIcon>
#include <QKeyEvent>
#include <QScreen>
#include <algorithm>

#include "app/shared/window_routines.h"
#include "ftp/operation_gate.h"
#include "toolkit/accessible.h"

// The picture lies in a static library, where nothing else refers to it.
static void RegisterPictures() {
    Q_INIT_RESOURCE(about);
}

namespace forms {
namespace {

constexpr double kTwipsPerPixel = 15;
constexpr double kFromLeft = 250, kAboveBottom = 3500;  // twips

constexpr int kLettersPerLine = 44;                         // of an explanation
constexpr double kPictureWidth = 5.2, kPictureHeight = 13;  // lines of text

}  // namespace

Form4::Form4(QWidget& window) : window_(window) {
    RegisterPictures();
    setupUi(this);
    toolkit::SetAccessibleRole(*this, QAccessible::Dialog);
    toolkit::MakeDecorative(*Image3);
    setWindowFlags(Qt::Tool);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setBackgroundRole(QPalette::Base);
    Image3->setBackgroundRole(QPalette::Highlight);
    ftp::OperationGate::AllowWhileBusy(this);
    FitToFont();
}

// Its frame is not known before it is shown; the main window's is as large or larger.
void Form4::Form_Load() {
    layout()->activate();
    const QRect main = window_.frameGeometry();
    const QSize frame = main.size() - window_.size();
    move(PlaceOfHelpPanel(main, size() + frame, window_.screen()->availableGeometry()));
    app::SetOwner(*this, window_);
}

// The layout holds the window to the size that its contents need.
void Form4::FitToFont() {
    for (QLabel* explanation : {Label1, Label2, Label3})
        explanation->setFixedWidth(kLettersPerLine * fontMetrics().averageCharWidth());
    const QSizeF picture = QSizeF(kPictureWidth, kPictureHeight) * fontMetrics().height();
    Image3->setPixmap(
        QIcon(QStringLiteral(":/about/upload.svg")).pixmap(picture.toSize(), devicePixelRatioF()));
}

void Form4::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) FitToFont();
}

// Closing has cut the link.
void Form4::showEvent(QShowEvent* event) {
    if (!event->spontaneous()) app::SetOwner(*this, window_);
    QWidget::showEvent(event);
}

void Form4::Form_QueryUnload() {
    app::ClearOwner(*this);
}

void Form4::closeEvent(QCloseEvent* event) {
    Form_QueryUnload();
    event->accept();
}

void Form4::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Cancel))
        close();
    else
        QWidget::keyPressEvent(event);
}

QPoint PlaceOfHelpPanel(const QRect& window, const QSize& panel, const QRect& screen) {
    const QPoint wanted(qRound(window.left() + kFromLeft / kTwipsPerPixel),
                        qRound(window.top() + window.height() - kAboveBottom / kTwipsPerPixel));
    const QPoint last(screen.left() + screen.width() - panel.width(),
                      screen.top() + screen.height() - panel.height());
    return {std::max(std::min(wanted.x(), last.x()), screen.left()),
            std::max(std::min(wanted.y(), last.y()), screen.top())};
}

}  // namespace forms
