#pragma once
// The application object: an error that no handler has caught is shown, and the program goes on. UI thread
// only.

#include <QApplication>

namespace app {

class Application : public QApplication {
    Q_OBJECT
 public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override;
};

/// Shows the error that is being handled (call inside a catch block) in a message box with an OK button.
void ReportUnhandledError();

}  // namespace app
