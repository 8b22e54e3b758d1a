#include "forms/main/server_list.h"

#include <QApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QToolTip>

#include "ftp/listing_rows.h"
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

bool ServerList::IsNamed(int row, const QString& beginning) const {
    const QString name = ftp::NameOfListingLine(model()->index(row, 0).data().toString());
    return name.startsWith(beginning, Qt::CaseInsensitive);
}

// The lines all begin alike. A row that is chosen already is passed by when a search begins, or when the same
// letter comes again; one that is only current is not. The space key, which no name begins with, chooses.
void ServerList::keyboardSearch(const QString& letters) {
    if (letters.trimmed().isEmpty()) return;
    const bool goes_on =
        since_typed_.isValid() && since_typed_.elapsed() < QApplication::keyboardInputInterval();
    typed_ = goes_on ? typed_ + letters : letters;
    since_typed_.start();
    const bool same_letter = typed_.count(typed_.front(), Qt::CaseInsensitive) == typed_.size();
    const int first = std::max(ListIndex(), 0) + (same_letter && Selected(ListIndex()) ? 1 : 0);
    const int rows = model()->rowCount();
    for (int i = 0; i < rows; ++i) {
        const int row = (first + i) % rows;
        if (!IsNamed(row, same_letter ? typed_.first(1) : typed_)) continue;
        return setCurrentIndex(model()->index(row, 0));
    }
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
