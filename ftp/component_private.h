#pragma once
// Running the component's operations: the nested wait and the delivery of what the worker tells. UI thread
// only.

#include <QBasicTimer>
#include <deque>

#include "ftp/component.h"
#include "ftp/mailbox.h"
#include "ftp/name_codec.h"
#include "ftp/secret_mask.h"

namespace ftp {

/// Outlives its component when that is destroyed inside an operation: the running call holds it until it
/// unwinds.
class Component::Private : public QObject, public std::enable_shared_from_this<Private> {
 public:
    Private(Component& component, Deadlines deadlines);

    /// Whether an operation may start now; raises the error event when another one runs.
    bool MayStart();
    /// Returns when the operation is over and all its events have been raised. `local_path` is the transfer's
    /// local file as the user knows it.
    void Run(Operation operation, const QString& local_path = {});
    /// With what is known of the server, and once more where the user trusts a certificate that is not valid.
    void Connect(ftp::Connect request);
    void BeginRun(int lanes);
    void EndRun();
    /// Raises the error event about a local path that cannot be used.
    void RefusePath(const QString& path);

    void AbortTransfer();
    /// Cancels the running operation and closes the session.
    void DropSession();
    /// As DropSession, and the component is reset before the running call returns.
    void DropAndReset();
    void Shutdown();
    /// The component goes away: nothing is raised from here on, and the running call unwinds.
    void Detach();

    NameCodec codec;

 protected:
    bool event(QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

 private:
    void Perform(Operation operation);
    void Prepare(const Operation& operation);
    void AwaitEnd();
    void Deliver();
    void DeliverNext();
    void On(const ftp::CommandSent& command);
    void On(const ReplyLine& reply);
    void On(const ListingBatch& batch);
    void On(const TransferStarted& transfer);
    void On(const TlsAgreed& tls);
    void On(const SessionChanged& session);
    void On(const Problem& problem);
    void On(const FileProblem& problem);
    void On(const Finished& finished);

    std::optional<CertificateAnswer> AskAboutCertificate(const CertificateQuestion& question);
    void RaiseProblem(const Failure& failure);
    void SampleProgress();
    void EndProgress();
    void SetBusy(bool busy);
    void SetConnected(bool connected, const QString& tls_version = {});
    /// The failure's words, not marked yet.
    QString WordsOf(const Failure& failure, const QString& local_path) const;

    /// Any handler of the event may destroy the component, so look at component_ again afterwards.
    template <class Signal, class... Arguments>
    void Raise(Signal signal, const Arguments&... arguments) {
        if (component_) Q_EMIT(component_->*signal)(arguments...);
    }

    Component* component_;
    Mailbox<Notification> mailbox_;
    std::deque<Notification> undelivered_;
    std::size_t next_line_ = 0;  // of the listing batch in front
    QBasicTimer delivery_;
    QBasicTimer sampling_;

    std::uint64_t request_ = 0;
    bool running_ = false;
    bool may_ask_ = false;  // a certificate that is not trusted is a question, not a failure
    std::optional<Certificate> certificate_;  // of the server that is being connected to
    std::optional<Failure> not_trusted_;      // the failure that the question stands for
    bool shut_down_ = false;
    bool reset_wanted_ = false;
    bool in_run_ = false;  // files may be on their way while no operation runs
    bool download_ = false;
    bool counting_ = false;  // the transfer's bytes are to be reported
    std::int64_t reported_ = 0;
    QString local_path_;
    SecretMask mask_;  // of the last connect; the worker logs in with it again until Quit or Reset

    std::unique_ptr<Worker> worker_;  // last: its thread puts into the mailbox until it is gone
};

}  // namespace ftp
