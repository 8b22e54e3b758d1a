#pragma once
// The About box. UI thread only.

#include "app/shared/owned_dialog.h"
#include "ui_about_form.h"

namespace forms {

/// While it is open the main window is disabled.
class Form2 : public app::OwnedDialog, private Ui::Form2 {
    Q_OBJECT
 public:
    /// `window` is the main window, whose icon the box shows; it outlives the box.
    explicit Form2(QWidget& window);

    /// Opens the box. Returns at once.
    void Form_Load();

 Q_SIGNALS:
    /// The user has chosen the line that leads to the help document. The box stays open.
    void HelpWanted();

 private:
    void Wire();
    void Command1_Click();

    QWidget& window_;
};

}  // namespace forms
