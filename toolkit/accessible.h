#pragma once
// What a program that reads the screen aloud is told beyond what Qt tells by itself. UI thread only.

#include <QAccessible>
#include <QLabel>
#include <QWidget>

namespace toolkit {

/// Buttons, combo boxes, labels that can be pressed and progress bars are told in our own way from now on: on
/// every system the name of a combo box is its label, and what such a program presses comes to the control as
/// a key, so that whatever keeps keys away from it keeps that away, too. Not before there is an application.
void InstallParts();

/// What the widget is. Its name is its accessible name, else the text of a label or the title of a window;
/// its description the accessible one, else its tool tip without the markup.
void SetAccessibleRole(QWidget& widget, QAccessible::Role role);

/// The widget is now another one than before, which may have been asked for already.
void RenewPart(QWidget& widget);

/// A picture beside a text that says the same: nobody has to hear of it.
void MakeDecorative(QLabel& picture);

/// The parts that Qt builds into the controls of a window: the field and the list of a combo box are called
/// as the box is, and what lies between two panes of a splitter is a separator.
void NameInnerParts(QWidget& window);

}  // namespace toolkit
