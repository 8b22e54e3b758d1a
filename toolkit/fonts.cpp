#include "toolkit/fonts.h"

#include <QFontDatabase>
#include <QGuiApplication>

namespace toolkit {

QFont FixedPitchFont() {
    const QString classic = QStringLiteral("Courier New");
    QFont font = QFontDatabase::hasFamily(classic) ? QFont(classic)
                                                   : QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(QGuiApplication::font().pointSizeF());
    font.setStyleHint(QFont::Monospace);
    return font;
}

}  // namespace toolkit
