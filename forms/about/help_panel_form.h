#pragma once
// The help panel: the program in three steps, in a small window beside the user's work. UI thread only.

#include <QWidget>

#include "ui_help_panel_form.h"

namespace forms {

/// Stays above the main window, also while that one is disabled, leaves it the focus when it is shown, and
/// can be used while an operation of the component runs. Closing it hides it; it keeps its place.
class Form4 : public QWidget, private Ui::Form4 {
    Q_OBJECT
 public:
    /// `window` is the main window; it outlives the panel.
    explicit Form4(QWidget& window);

    /// Places the panel in the main window's lower left corner and makes that window its owner. Does not show
    /// it.
    void Form_Load();

 protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

 private:
    void FitToFont();
    void Form_QueryUnload();

    QWidget& window_;
};

/// Where the panel stands: `window` is the main window's frame, `panel` the size of the panel with its frame.
/// It keeps within `screen` even where the main window does not.
QPoint PlaceOfHelpPanel(const QRect& window, const QSize& panel, const QRect& screen);

}  // namespace forms
