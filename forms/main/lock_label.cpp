#include "forms/main/lock_label.h"

#include <QIcon>
#include <QStyle>

#include "toolkit/accessible.h"
#include "toolkit/wrapped_label.h"

namespace forms {

LockLabel::LockLabel(QWidget* parent) : QLabel(parent) {
    toolkit::SetAccessibleRole(*this, QAccessible::Graphic);
    ShowNone();
}

void LockLabel::ShowSession(const QString& tls_version) {
    if (tls_version.isEmpty())
        Show(QStringLiteral(":/main/lock_open.svg"),
             QStringLiteral("Okrypterad förbindelse: lösenord och filer går i klartext"));
    else
        Show(QStringLiteral(":/main/lock_closed.svg"),
             QStringLiteral("Krypterad förbindelse (") + tls_version + u')');
}

void LockLabel::ShowNone() {
    hide();
    clear();
    setToolTip({});
    setAccessibleName({});
}

void LockLabel::Show(const QString& picture, const QString& words) {
    if (words == accessibleName()) return;
    const int extent = style()->pixelMetric(QStyle::PM_SmallIconSize);
    setPixmap(QIcon(picture).pixmap(QSize(extent, extent), devicePixelRatioF()));
    setToolTip(toolkit::PlainToolTip(words));
    setAccessibleName(words);
    show();
}

}  // namespace forms
