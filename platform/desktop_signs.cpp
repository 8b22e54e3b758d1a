#include "platform/desktop_signs.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace platform {
namespace {

const QString kNotices = QStringLiteral("org.freedesktop.Notifications");
const QString kNoticesPath = QStringLiteral("/org/freedesktop/Notifications");
const QString kProgram = QStringLiteral("websmide-ftp");
constexpr int kUsualTime = -1;  // that the desktop shows a notice

QDBusMessage CallOfNotices(const QString& method) {
    return QDBusMessage::createMethodCall(kNotices, kNoticesPath, kNotices, method);
}

}  // namespace

DesktopSigns::DesktopSigns(std::optional<QString> bus, QObject* parent)
    : QObject(parent), address_(std::move(bus)) {
    pause_.setSingleShot(true);
    connect(&pause_, &QTimer::timeout, this, &DesktopSigns::SendProgress);
    connect(&bus_, &DesktopBus::Opened, this, &DesktopSigns::OnOpened);
}

DesktopSigns::~DesktopSigns() {
    HideProgress();
}

void DesktopSigns::Begin() {
    bus_.Open(address_);
}

void DesktopSigns::OnOpened() {
    // Without the name of the sender, which would have to be waited for.
    QDBusConnection bus(bus_.Name());
    bus.connect(QString(), kNoticesPath, kNotices, QStringLiteral("ActivationToken"), this,
                SLOT(OnToken(uint, QString)));
    bus.connect(QString(), kNoticesPath, kNotices, QStringLiteral("ActionInvoked"), this,
                SLOT(OnAction(uint, QString)));
    SendProgress();
    if (notice_) AskForAbilities();
}

void DesktopSigns::ShowProgress(double share) {
    share_ = share;
    Begin();
    if (!pause_.isActive()) SendProgress();
}

// At once: what follows may be the end of the program.
void DesktopSigns::HideProgress() {
    share_.reset();
    pause_.stop();
    SendProgress();
}

void DesktopSigns::SendProgress() {
    if (Standing() != DesktopBus::State::Open || share_ == shown_) return;
    shown_ = share_;
    auto update = QDBusMessage::createSignal(QStringLiteral("/com/canonical/unity/launcherentry/1"),
                                             QStringLiteral("com.canonical.Unity.LauncherEntry"),
                                             QStringLiteral("Update"));
    update << QStringLiteral("application://websmide-ftp.desktop")
           << QVariantMap{{QStringLiteral("progress"), share_.value_or(0)},
                          {QStringLiteral("progress-visible"), share_.has_value()}};
    QDBusConnection(bus_.Name()).send(update);
    if (share_) pause_.start(kBetweenSigns);
}

void DesktopSigns::Tell(const QString& heading, const QString& text) {
    notice_ = Notice{heading, text};
    Begin();
    if (Standing() == DesktopBus::State::Open) AskForAbilities();
}

void DesktopSigns::AskForAbilities() {
    auto* answer = new QDBusPendingCallWatcher(
        QDBusConnection(bus_.Name()).asyncCall(CallOfNotices(QStringLiteral("GetCapabilities"))), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<QStringList> abilities = *answer;
        if (!abilities.isError()) SendNotice(abilities.value());
        answer->deleteLater();
    });
}

void DesktopSigns::SendNotice(const QStringList& abilities) {
    if (!notice_) return;
    const Notice notice = *std::exchange(notice_, {});
    const bool markup = abilities.contains(QStringLiteral("body-markup"));
    const bool can_be_chosen = abilities.contains(QStringLiteral("actions"));
    QDBusMessage notify = CallOfNotices(QStringLiteral("Notify"));
    notify << QStringLiteral("Websmide's FTP-program") << told_ << kProgram << notice.heading
           << (markup ? notice.text.toHtmlEscaped() : notice.text)
           << (can_be_chosen ? QStringList{QStringLiteral("default"), QStringLiteral("Visa fönstret")}
                             : QStringList())
           << QVariantMap{{QStringLiteral("desktop-entry"), kProgram},
                          {QStringLiteral("category"), QStringLiteral("transfer.complete")}}
           << kUsualTime;
    auto* answer = new QDBusPendingCallWatcher(QDBusConnection(bus_.Name()).asyncCall(notify), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<uint> number = *answer;
        if (!number.isError()) told_ = number.value();
        answer->deleteLater();
    });
}

void DesktopSigns::OnToken(uint notice, const QString& token) {
    if (notice == told_) token_ = token;
}

void DesktopSigns::OnAction(uint notice, const QString& action) {
    const QString token = std::exchange(token_, {});
    if (notice == told_ && told_ != 0 && action == QStringLiteral("default")) Q_EMIT Chosen(token);
}

}  // namespace platform
