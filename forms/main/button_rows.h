#pragma once
// A row of buttons that breaks into several rows where it is too narrow for one. UI thread only.

#include <QPushButton>

namespace forms {

/// Lays out its visible child buttons in the order of their creation (which is the tab order). One row keeps
/// the buttons at their own width; several rows are filled to the full width, so that their right edges
/// agree.
class ButtonRows : public QWidget {
    Q_OBJECT
 public:
    explicit ButtonRows(QWidget* parent = nullptr);

    QSize sizeHint() const override;         // all buttons in one row
    QSize minimumSizeHint() const override;  // the widest button
    int heightForWidth(int width) const override;

 protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

 private:
    using Row = QList<QPushButton*>;
    QList<Row> RowsFor(int width) const;
    void Place();
};

}  // namespace forms
