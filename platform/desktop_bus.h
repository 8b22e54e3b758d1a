#pragma once
// The way to the desktop's session bus. UI thread only.

#include <QObject>
#include <QString>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <memory>
#include <optional>

namespace platform {

/// Where the session bus is to be found, or nothing where the session has none. No bus is ever started.
std::optional<QString> SessionBusAddress();

/// A connection of its own to a bus. It is opened on a thread that nobody waits for, and only when the bus
/// has answered within some seconds: neither a bus that never answers nor one that is gone holds up the
/// program, its end included.
class DesktopBus : public QObject {
    Q_OBJECT
 public:
    enum class State { Closed, Opening, Open, None };

    /// How long a bus may take to answer.
    static inline std::chrono::milliseconds patience{5000};

    explicit DesktopBus(QObject* parent = nullptr) : QObject(parent) {}
    ~DesktopBus() override;

    /// Opens the connection at the first call; the later ones do nothing. Returns at once.
    void Open(const std::optional<QString>& address);
    State Standing() const { return state_; }
    /// The name of the connection for QDBusConnection, once it is open.
    QString Name() const { return name_; }

 Q_SIGNALS:
    void Opened();

 private:
    void Look();

    State state_ = State::Closed;
    QString name_;
    QTimer look_;
    std::shared_ptr<std::atomic<State>> attempt_;
};

}  // namespace platform
