#include "toolkit/splitter.h"

#include <QKeyEvent>
#include <QPainter>
#include <QPointer>
#include <QSplitterHandle>
#include <QStyleOption>

namespace toolkit {
namespace {

constexpr int kStep = 16;  // pixels

class Handle : public QSplitterHandle {
 public:
    using QSplitterHandle::QSplitterHandle;

    void TakeFocus(QWidget* before) {
        before_ = before;
        setFocus(Qt::ShortcutFocusReason);
    }
    QWidget* Before() const { return before_; }
    void GiveBack() {
        if (before_) before_->setFocus(Qt::ShortcutFocusReason);
    }

 protected:
    void paintEvent(QPaintEvent* event) override {
        QSplitterHandle::paintEvent(event);
        if (!hasFocus()) return;
        QStyleOptionFocusRect option;
        option.initFrom(this);
        option.state |= QStyle::State_KeyboardFocusChange;
        QPainter painter(this);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }

    void keyPressEvent(QKeyEvent* event) override {
        const bool upright = orientation() == Qt::Horizontal;
        const int back = upright ? Qt::Key_Left : Qt::Key_Up, on = upright ? Qt::Key_Right : Qt::Key_Down;
        const int place = upright ? x() : y();
        if (event->key() == back) return moveSplitter(place - kStep);
        if (event->key() == on) return moveSplitter(place + kStep);
        switch (event->key()) {
            case Qt::Key_Home:
                return moveSplitter(0);
            case Qt::Key_End:
                return moveSplitter(upright ? splitter()->width() : splitter()->height());
            case Qt::Key_Return:
            case Qt::Key_Enter:
            case Qt::Key_Escape:
                return GiveBack();
            default:
                QSplitterHandle::keyPressEvent(event);
        }
    }

 private:
    QPointer<QWidget> before_;  // had the focus before the handles had it
};

QList<Handle*> VisibleHandles(const QWidget& window) {
    QList<Handle*> handles;
    for (QSplitterHandle* candidate : window.findChildren<QSplitterHandle*>())
        if (auto* handle = dynamic_cast<Handle*>(candidate); handle && handle->isVisible())
            handles.append(handle);
    return handles;
}

}  // namespace

QSplitterHandle* Splitter::createHandle() {
    auto* handle = new Handle(orientation(), this);
    handle->setToolTip(QStringLiteral("Flyttas också med F8 och piltangenterna"));
    return handle;
}

void FocusNextHandle(const QWidget& window) {
    const QList<Handle*> handles = VisibleHandles(window);
    auto* const current = dynamic_cast<Handle*>(window.focusWidget());
    const auto next = handles.indexOf(current) + 1;
    if (next < handles.size())
        handles[next]->TakeFocus(current ? current->Before() : window.focusWidget());
    else if (current)
        current->GiveBack();
}

}  // namespace toolkit
