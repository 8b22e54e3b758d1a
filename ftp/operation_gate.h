#pragma once
// Keeps input away from the program while an operation of the component runs.

#include <QObject>

namespace ftp {

/// While one lives, mouse, key, wheel, shortcut, context-menu, drag and touch events reach only objects that
/// carry AllowWhileBusy, or have a parent that does; all others are swallowed, not queued. Painting, moving,
/// resizing and closing windows go on. Installed by the component's wait, on the application.
class OperationGate : public QObject {
    Q_OBJECT
 public:
    OperationGate();
    ~OperationGate() override;

    /// Whether one lives. Input is kept away by itself; what comes later by a timer or a queue has to ask.
    static bool IsUp();

    /// Marks an object (a button, a list, a whole message box) as usable while an operation runs.
    static void AllowWhileBusy(QObject* object, bool allow = true);
    static bool IsAllowed(const QObject* object);

    bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace ftp
