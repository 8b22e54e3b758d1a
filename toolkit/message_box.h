#pragma once
// The message box and the input box, modal, with Swedish buttons. UI thread only; both run an event loop of
// their own.

#include <QString>
#include <QWidget>

namespace toolkit {

enum class Buttons { Ok, YesNo };
enum class Icon { None, Information };
enum class Answer { Ok, Yes, No };

/// The program's name, the title where none is given.
inline const QString kDefaultTitle = QStringLiteral("Websmide's FTP-program 3.0");

/// Shows the text as plain text (never as markup). Closing a Yes/No box by Escape or its close button is No,
/// and so is the end of the parent or of the program while the box is open. The box stays above the parent's
/// window, which may be disabled, and takes input also while an operation of the FTP component runs. Enter is
/// "Ja" or "OK". objectName "MsgBox"; the buttons are "Ja" (cmdYes), "Nej" (cmdNo), "OK" (cmdOk).
Answer MsgBox(QWidget* parent, const QString& text, Buttons buttons, Icon icon,
              const QString& title = kDefaultTitle);

/// Asks for a line of text; empty when cancelled, or ended as above. objectName "InputBox"; the field is
/// txtInput, the buttons "OK" (cmdOk) and "Avbryt" (cmdCancel).
QString InputBox(QWidget* parent, const QString& prompt, const QString& title,
                 const QString& default_text = {});

}  // namespace toolkit
