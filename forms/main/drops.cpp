// Drag and drop between the lists, and from other programs onto the server list. A drop does what the
// transfer button does.

#include <QDropEvent>
#include <QMimeData>
#include <QTimer>

#include "forms/main/main_form.h"
#include "forms/transfer/transfer_form.h"
#include "ftp/operation_gate.h"
#include "platform/drive_path.h"
#include "platform/folder.h"

namespace forms {

void MainForm::PrepareDrops() {
    for (toolkit::ListView* list : std::initializer_list<toolkit::ListView*>{list2, listdir2}) {
        list->setDragDropMode(QAbstractItemView::DragOnly);
        list->viewport()->setAcceptDrops(true);
        list->viewport()->installEventFilter(this);
        connect(list, &toolkit::ListView::DragEnded, this, &MainForm::ActOnDrop);
    }
}

bool MainForm::MayDrop(const QObject* target, const QDropEvent& event) const {
    if (target != listdir2->viewport()) return event.source() == listdir2 && Command2->isEnabled();
    if (event.source() == list2) return Command1->isEnabled();
    return !event.source() && event.mimeData()->hasUrls() && Command9->isEnabled();
}

bool MainForm::HandleDrag(const QObject* target, QDropEvent& event) {
    if (target != list2->viewport() && target != listdir2->viewport()) return false;
    event.setDropAction(Qt::CopyAction);
    event.setAccepted(MayDrop(target, event));
    if (event.type() == QEvent::Drop && event.isAccepted()) TakeDrop(event);
    return true;
}

// The transfer begins when the drag is over: its event loop must not hold the operation's.
void MainForm::TakeDrop(const QDropEvent& event) {
    if (event.source()) {
        dropped_ = [button = event.source() == list2 ? Command1 : Command2] { button->click(); };
        return;
    }
    dropped_ = [this, urls = event.mimeData()->urls()] { SendDropped(urls); };
    QTimer::singleShot(0, this, &MainForm::ActOnDrop);
}

void MainForm::ActOnDrop() {
    const auto act = std::exchange(dropped_, nullptr);
    if (act && !ftp::OperationGate::IsUp()) act();
}

void MainForm::SendDropped(const QList<QUrl>& urls) {
    std::vector<Upload> files;
    for (const QUrl& url : urls) {
        const std::optional<QString> path = platform::FromUrl(url);
        if (const auto size = path ? platform::FileLength(*path) : std::nullopt)
            files.push_back({*path, path->mid(path->lastIndexOf(u'\\') + 1).toLower(), size});
        else
            Tell(platform::FileResult::PathError, path.value_or(url.toDisplayString()));
    }
    if (files.empty() || !Command9->isEnabled()) return;
    const QString& first = files.front().path;
    Send(files, first.left(std::max(qsizetype(3), first.lastIndexOf(u'\\'))));
}

}  // namespace forms
