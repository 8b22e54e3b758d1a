#include "forms/viewer/viewer_form.h"

#include <QScreen>
#include <QShortcut>

#include "app/shared/file_errors.h"
#include "app/shared/window_routines.h"
#include "forms/viewer/viewer_text.h"
#include "ftp/operation_gate.h"
#include "platform/drive_path.h"
#include "platform/whole_file.h"
#include "toolkit/fonts.h"

namespace forms {
namespace {

constexpr qsizetype kMostBytes = 4 * 1024 * 1024;
constexpr double kMostOfScreen = 0.9;
constexpr int kTabStop = 8;     // characters
constexpr int kTextMargin = 8;  // pixels

// A file may be named like Qt's mark for a changed document.
QString TitleOf(const QString& path) {
    return VisibleText(path.sliced(path.lastIndexOf(u'\\') + 1))
        .replace(QStringLiteral("[*]"), QStringLiteral("[*][*]"));
}

// A line may break after each folder.
QString Breakable(const QString& path) {
    const QChar zero_width_space(0x200B);
    return VisibleText(path).replace(u'\\', QStringLiteral("\\") + zero_width_space);
}

QString NoticeFor(const ViewedText& viewed) {
    QStringList notices;
    if (viewed.cut) notices += QStringLiteral("Filen är stor. Bara början av den visas.");
    if (viewed.lines_split) notices += QStringLiteral("Långa rader visas delade.");
    if (viewed.text.isEmpty()) notices += QStringLiteral("Filen är tom.");
    return notices.join(u' ');
}

}  // namespace

TextViewer::TextViewer(QWidget& window) : window_(window) {
    setupUi(this);
    setWindowFlags(Qt::Window);
    notice->setBackgroundRole(QPalette::ToolTipBase);
    notice->setForegroundRole(QPalette::ToolTipText);
    view->setFont(toolkit::FixedPitchFont());
    view->setTabStopDistance(kTabStop * view->fontMetrics().horizontalAdvance(u' '));
    view->document()->setDocumentMargin(kTextMargin);
    find_bar->hide();
    // The cross that empties the field is Qt's own, and has a picture only.
    for (QAction* action : txtFind->findChildren<QAction*>()) action->setText(QStringLiteral("Rensa"));
    ftp::OperationGate::AllowWhileBusy(this);
    Wire();
}

void TextViewer::Wire() {
    const auto on_key = [this](const QKeySequence& keys, QWidget* where, auto act) {
        auto* const shortcut = new QShortcut(keys, where);
        shortcut->setContext(Qt::WidgetWithChildrenShortcut);
        connect(shortcut, &QShortcut::activated, this, act);
    };
    const auto find_next = [this] { Find({}); };
    const auto find_previous = [this] { Find(QTextDocument::FindBackward); };
    on_key(QKeySequence::Find, this, [this] { OpenFindBar(); });
    on_key(Qt::Key_F3, this, find_next);
    on_key(Qt::SHIFT | Qt::Key_F3, this, find_previous);
    on_key(Qt::Key_Escape, find_bar, [this] { CloseFindBar(); });
    connect(txtFind, &QLineEdit::returnPressed, this, find_next);
    connect(txtFind, &QLineEdit::textEdited, not_found, &QLabel::hide);
    connect(cmdNext, &QPushButton::clicked, this, find_next);
    connect(cmdPrevious, &QPushButton::clicked, this, find_previous);
}

void TextViewer::ShowFile(const QString& path) {
    setWindowTitle(TitleOf(path));
    Read(path);
    CloseFindBar();
    if (!isVisible()) {
        resize(size().boundedTo(screen()->availableSize() * kMostOfScreen));
        app::CentreOnScreen(*this);
        app::SetOwner(*this, window_);
    }
    show();
    raise();
    activateWindow();
}

void TextViewer::Read(const QString& path) {
    const auto native = platform::Resolve(path);
    const platform::FileContent content = native ? platform::ReadWholeFile(*native, kMostBytes + 1)
                                                 : platform::FileContent{platform::FileResult::PathError, {}};
    if (content.result != platform::FileResult::Done) {
        view->clear();
        Say(app::FileErrorText(content.result, Breakable(path)));
        return;
    }
    const ViewedText viewed = TextOf(content.bytes.left(kMostBytes), content.bytes.size() > kMostBytes);
    view->setPlainText(viewed.text);
    Say(NoticeFor(viewed));
}

void TextViewer::Say(const QString& line) {
    notice->setText(line);
    notice->setVisible(!line.isEmpty());
}

void TextViewer::OpenFindBar() {
    const QString selected = view->textCursor().selectedText();
    if (!selected.isEmpty() && !selected.contains(QChar::ParagraphSeparator)) txtFind->setText(selected);
    find_bar->show();
    txtFind->selectAll();
    txtFind->setFocus();
}

void TextViewer::CloseFindBar() {
    find_bar->hide();
    not_found->hide();
    view->setFocus();
}

void TextViewer::Find(QTextDocument::FindFlags direction) {
    if (txtFind->text().isEmpty()) {
        OpenFindBar();
        return;
    }
    const QTextCursor before = view->textCursor();
    bool found = view->find(txtFind->text(), direction);
    if (!found) {
        view->moveCursor(direction ? QTextCursor::End : QTextCursor::Start);
        found = view->find(txtFind->text(), direction);
    }
    if (!found) view->setTextCursor(before);
    not_found->setVisible(!found);
}

}  // namespace forms
