#include "forms/main/server_list.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QToolTip>

#include "ftp/readable.h"
#include "toolkit/wrapped_label.h"

namespace forms {

ServerList::ServerList(QWidget* parent) : ListView(parent) {
    setTextElideMode(Qt::ElideMiddle);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
}

void ServerList::doItemsLayout() {
    ListView::doItemsLayout();
    FitColumn();
}

void ServerList::resizeEvent(QResizeEvent* event) {
    ListView::resizeEvent(event);
    FitColumn();
}

void ServerList::FitColumn() {
    if (header()->count() > 0) header()->resizeSection(0, viewport()->width());
}

bool ServerList::viewportEvent(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return ListView::viewportEvent(event);
    const auto& help = static_cast<const QHelpEvent&>(*event);
    const QModelIndex row = indexAt(help.pos());
    const bool shortened = row.isValid() && sizeHintForIndex(row).width() > viewport()->width();
    QStringList tip{shortened ? row.data().toString() : QString(),
                    ftp::ListingTip(row.data().toString(), QDate::currentDate())};
    tip.removeAll(QString());
    QToolTip::showText(help.globalPos(), toolkit::PlainToolTip(tip.join(u'\n')), viewport());
    return true;
}

}  // namespace forms
