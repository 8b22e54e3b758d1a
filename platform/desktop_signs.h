#pragma once
// What the desktop shows of the program outside its windows: the progress on its button in the task bar, and
// notices. UI thread only.

#include <QObject>
#include <QString>
#include <QTimer>
#include <optional>

#include "platform/desktop_bus.h"

class QDBusMessage;
class QDBusPendingCallWatcher;

namespace platform {

/// Nothing here waits or fails: where there is no bus, or nobody on it who listens, nothing is shown. The bus
/// is not spoken to before the first call.
class DesktopSigns : public QObject {
    Q_OBJECT
 public:
    static constexpr int kBetweenSigns = 250;  // milliseconds

    explicit DesktopSigns(std::optional<QString> bus = SessionBusAddress(), QObject* parent = nullptr);
    ~DesktopSigns() override;

    /// 0 .. 1. At most four a second are sent, the last one always.
    void ShowProgress(double share);
    void HideProgress();

    /// A notice, in place of the one before. Both texts are plain, with whatever is in them.
    void Tell(const QString& heading, const QString& text);

    /// How the way to the bus stands.
    DesktopBus::State Standing() const { return bus_.Standing(); }

 Q_SIGNALS:
    /// The user has chosen the notice. `activation_token`: what a Wayland desktop wants to see from a window
    /// that comes to the front, or nothing.
    void Chosen(const QString& activation_token);

 private Q_SLOTS:
    void OnToken(uint notice, const QString& token);
    void OnAction(uint notice, const QString& action);

 private:
    struct Notice {
        QString heading, text;
    };

    void Begin();
    void OnOpened();
    void SendProgress();
    void AskForAbilities();
    void SendNotice(const QStringList& abilities);

    const std::optional<QString> address_;
    DesktopBus bus_;
    QTimer pause_;                  // after what has been sent
    std::optional<double> share_;   // to be shown
    std::optional<double> shown_;   // as the desktop knows it
    std::optional<Notice> notice_;  // to be told
    uint told_ = 0;                 // the server's number of the last notice
    QString token_;                 // comes before the action that it belongs to
};

}  // namespace platform
