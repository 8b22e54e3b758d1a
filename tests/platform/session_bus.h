#pragma once
// A session bus of a test's own, and a desktop on it that takes notices and shows progress.

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QVariantMap>

class SessionBus {
 public:
    SessionBus() {
        QFile rules(files_.filePath("rules"));
        if (!rules.open(QIODevice::WriteOnly)) throw std::runtime_error("rules of the bus");
        rules.write(
            "<busconfig><type>session</type><listen>unix:path=" + QFile::encodeName(files_.filePath("bus")) +
            "</listen><auth>EXTERNAL</auth><policy context='default'><allow send_destination='*'/>"
            "<allow receive_sender='*'/><allow own='*'/><allow user='*'/></policy></busconfig>");
        rules.close();
        daemon_.start("dbus-daemon", {"--config-file=" + rules.fileName(), "--nofork", "--print-address=1"});
        if (!daemon_.waitForReadyRead(20'000)) throw std::runtime_error("dbus-daemon does not start");
        address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
    }
    ~SessionBus() { End(); }

    QString Address() const { return address_; }
    void End() {
        daemon_.terminate();
        daemon_.waitForFinished(20'000);
    }

 private:
    QTemporaryDir files_;
    QProcess daemon_;
    QString address_;
};

class FakeDesktop : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
 public:
    struct Notice {
        uint replaces;
        QString icon, heading, text;
        QStringList actions;
        QVariantMap hints;
    };

    explicit FakeDesktop(const SessionBus& bus, const QStringList& abilities = {"actions", "body-markup"})
        : abilities_(abilities), name_(QStringLiteral("fake_desktop_%1").arg(++made)) {
        QDBusConnection connection = QDBusConnection::connectToBus(bus.Address(), name_);
        EXPECT_TRUE(
            connection.registerObject("/org/freedesktop/Notifications", this,
                                      QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals));
        EXPECT_TRUE(connection.registerService("org.freedesktop.Notifications"));
        EXPECT_TRUE(connection.connect({}, {}, "com.canonical.Unity.LauncherEntry", "Update", this,
                                       SLOT(Update(QString, QVariantMap))));
    }
    ~FakeDesktop() override { QDBusConnection::disconnectFromBus(name_); }

    QList<Notice> notices;
    QStringList launchers;  // that the progress has been sent for
    QList<QVariantMap> progress;

    bool ShowsProgress() const { return !progress.isEmpty() && progress.last()["progress-visible"].toBool(); }
    double Progress() const { return progress.isEmpty() ? -1 : progress.last()["progress"].toDouble(); }

 public Q_SLOTS:
    QStringList GetCapabilities() { return abilities_; }
    uint Notify(const QString&, uint replaces, const QString& icon, const QString& heading,
                const QString& text, const QStringList& actions, const QVariantMap& hints, int) {
        notices.append({replaces, icon, heading, text, actions, hints});
        return replaces ? replaces : 40 + static_cast<uint>(notices.size());
    }

 Q_SIGNALS:
    void ActionInvoked(uint notice, const QString& action);
    void ActivationToken(uint notice, const QString& token);

 private Q_SLOTS:
    void Update(const QString& launcher, const QVariantMap& what) {
        launchers.append(launcher);
        progress.append(what);
    }

 private:
    static inline int made = 0;
    const QStringList abilities_;
    const QString name_;
};
