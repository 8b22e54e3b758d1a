#include "toolkit/wrapped_label.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QTextDocument>
#include <algorithm>
#include <cmath>

namespace toolkit {
namespace {

constexpr int kCharactersPerLine = 62;

// A document wraps at words, and anywhere in a word that has no room on a line of its own.
void LayOut(QTextDocument& document, const QLabel& label) {
    document.setDefaultFont(label.font());
    document.setDocumentMargin(0);
    document.setPlainText(label.text());
    const double longest = kCharactersPerLine * label.fontMetrics().averageCharWidth();
    document.setTextWidth(std::ceil(std::min(document.idealWidth(), longest)));
}

}  // namespace

WrappedLabel::WrappedLabel(const QString& text, QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setText(text);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize WrappedLabel::sizeHint() const {
    QTextDocument document;
    LayOut(document, *this);
    return {static_cast<int>(std::ceil(document.textWidth())),
            static_cast<int>(std::ceil(document.size().height()))};
}

void WrappedLabel::paintEvent(QPaintEvent*) {
    QTextDocument document;
    LayOut(document, *this);
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette.setColor(QPalette::Text, palette().color(foregroundRole()));
    QPainter painter(this);
    document.documentLayout()->draw(&painter, context);
}

QString PlainToolTip(const QString& text) {
    if (text.isEmpty()) return {};
    const QString breakable = text.toHtmlEscaped().replace(u'\\', QStringLiteral("\\\u200b"));
    return QStringLiteral("<p style='white-space: pre-wrap'>") + breakable + QStringLiteral("</p>");
}

}  // namespace toolkit
