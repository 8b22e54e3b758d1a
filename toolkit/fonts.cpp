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

void MakeHeading(QWidget& text, double times) {
    QFont font = text.font();
    font.setBold(true);
    // A size that is set no longer follows the one of the parent.
    if (times != 1) font.setPointSizeF(QFontInfo(font).pointSizeF() * times);
    text.setFont(font);
}

}  // namespace toolkit
