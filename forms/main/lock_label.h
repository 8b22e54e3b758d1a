#pragma once
// The lock beside the state of the session. UI thread only.

#include <QLabel>

namespace forms {

/// What it shows is said in its tool tip, too, and to those who hear the window.
class LockLabel : public QLabel {
    Q_OBJECT
 public:
    explicit LockLabel(QWidget* parent = nullptr);

    /// Of a session: closed where `tls_version` names what it is encrypted with, open where that is empty.
    void ShowSession(const QString& tls_version);
    /// No lock at all.
    void ShowNone();

 private:
    void Show(const QString& picture, const QString& words);
};

}  // namespace forms
