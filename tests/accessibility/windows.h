#pragma once
// Every window of the program, opened one at a time as a user opens it.

#include <QAccessible>
#include <functional>

#include "tests/forms/main/main_window.h"

namespace forms {

/// The parameter is the window's objectName.
class Windows : public MainWindow, public ::testing::WithParamInterface<const char*> {
 protected:
    void SetUp() override;

    /// Opens the window in its full glory (with the find bar, and files in the lists), has a look at it while
    /// it is the active one, and closes it.
    void Visit(const std::function<void(QWidget& window)>& look);

 private:
    QWidget* OpenByName(const QByteArray& name);
    std::shared_ptr<QWidget> own_;  // what no button of the main window opens
};

inline auto EveryWindow() {
    return ::testing::Values("MainForm", "frmConnection", "Form1", "Form2", "Form3", "Form4", "favviskat",
                             "fmRekurs", "TextViewer", "frmCertificate", "MsgBox", "InputBox");
}

inline std::string NameOfWindow(const ::testing::TestParamInfo<const char*>& window) {
    return window.param;
}

inline QString AccessibleText(const QWidget& widget, QAccessible::Text kind) {
    const QAccessibleInterface* part = QAccessible::queryAccessibleInterface(const_cast<QWidget*>(&widget));
    return part ? part->text(kind) : QString();
}

/// For messages.
inline std::string Describe(const QWidget& widget) {
    return (QString::fromLatin1(widget.metaObject()->className()) + u' ' + widget.objectName() +
            QStringLiteral(" \"") + AccessibleText(widget, QAccessible::Name) + u'"')
        .toStdString();
}

/// What the user can act on: whatever takes the focus, and the buttons that do not.
QList<QWidget*> ControlsOf(const QWidget& window);

/// As far as it is up to the controls: a button that a handler has disabled is reached like the others.
void EnableAll(QWidget& window);

/// What Tab stops at while everything is enabled.
QList<QWidget*> TabStopsOf(const QWidget& window);

}  // namespace forms
