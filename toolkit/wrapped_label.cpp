#include "toolkit/wrapped_label.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QResizeEvent>
#include <QTextDocument>
#include <algorithm>
#include <cmath>

namespace toolkit {
namespace {

constexpr int kCharactersPerLine = 62;
constexpr int kFewestCharactersPerLine = 20;

// A document wraps at words, and anywhere in a word that has no room on a line of its own.
void Fill(QTextDocument& document, const QLabel& label) {
    document.setDefaultFont(label.font());
    document.setDocumentMargin(0);
    document.setPlainText(label.text());
}

void LayOut(QTextDocument& document, const QLabel& label) {
    Fill(document, label);
    const double longest = kCharactersPerLine * label.fontMetrics().averageCharWidth();
    document.setTextWidth(std::ceil(std::min(document.idealWidth(), longest)));
}

int HeightOf(const QTextDocument& document) {
    return static_cast<int>(std::ceil(document.size().height()));
}

void Draw(const QTextDocument& document, QLabel& label) {
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette.setColor(QPalette::Text, label.palette().color(label.foregroundRole()));
    QPainter painter(&label);
    document.documentLayout()->draw(&painter, context);
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
    return {static_cast<int>(std::ceil(document.textWidth())), HeightOf(document)};
}

void WrappedLabel::paintEvent(QPaintEvent*) {
    QTextDocument document;
    LayOut(document, *this);
    Draw(document, *this);
}

FlowingLabel::FlowingLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);
}

// Not height-for-width: windows do not hold to it when they are made smaller.
QSize FlowingLabel::minimumSizeHint() const {
    const int character = fontMetrics().averageCharWidth();
    QTextDocument document;
    Fill(document, *this);
    document.setTextWidth(has_width_ ? width() : kCharactersPerLine * character);
    return {kFewestCharactersPerLine * character, HeightOf(document)};
}

void FlowingLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    has_width_ = true;
    if (event->oldSize().width() != width()) updateGeometry();
}

void FlowingLabel::paintEvent(QPaintEvent*) {
    QTextDocument document;
    Fill(document, *this);
    document.setTextWidth(width());
    Draw(document, *this);
}

QString PlainToolTip(const QString& text) {
    if (text.isEmpty()) return {};
    const QString breakable = text.toHtmlEscaped().replace(u'\\', QStringLiteral("\\\u200b"));
    return QStringLiteral("<p style='white-space: pre-wrap'>") + breakable + QStringLiteral("</p>");
}

}  // namespace toolkit
