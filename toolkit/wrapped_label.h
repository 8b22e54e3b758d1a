#pragma once
// A label for a text that a box asks or tells, and tool tips. UI thread only.

#include <QLabel>

namespace toolkit {

/// A tool tip for text that may come from a server or be a file's name: shown as it is, never as markup; a
/// long path breaks after its folders.
QString PlainToolTip(const QString& text);

/// Shows plain text in lines of a pleasant length; a word that is too long for a line, as a path may be, is
/// broken.
class WrappedLabel : public QLabel {
    Q_OBJECT
 public:
    WrappedLabel(const QString& text, QWidget* parent);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
    void paintEvent(QPaintEvent* event) override;
};

/// Plain text that takes the width it gets, and asks for the height that it then needs: a word that has no
/// room on a line of its own is broken, so that no text makes a window wider.
class FlowingLabel : public QLabel {
    Q_OBJECT
 public:
    explicit FlowingLabel(QWidget* parent = nullptr);
    QSize sizeHint() const override { return minimumSizeHint(); }
    QSize minimumSizeHint() const override;

 protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

 private:
    bool has_width_ = false;  // that a layout has given it
};

}  // namespace toolkit
