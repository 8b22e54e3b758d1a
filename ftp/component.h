#pragma once
// The FTP component: properties, blocking operations and events, on the UI thread.
//
// Each operation returns when it is over. While it runs, this object holds the one nested event loop that
// waits for the worker, with the OperationGate installed: the screen paints, and input reaches only what the
// gate lets through. Events of the running operation are raised inside the call, in the order of the wire,
// all of them before it returns. Operations return nothing and throw nothing: what fails raises Error.

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>

#include "ftp/engine/wire/certificate.h"
#include "ftp/engine/worker.h"

namespace ftp {

/// Thrown only by SetAction for a code that stands for no operation.
class UnknownAction : public std::runtime_error {
 public:
    UnknownAction(std::int32_t number, const QString& description);
    std::int32_t Number() const { return number_; }
    QString Description() const { return description_; }

 private:
    std::int32_t number_;
    QString description_;
};

/// What is known of a server from earlier sessions.
struct KnownServer {
    bool had_tls = false;  // it has been reached with TLS; plain text is refused from then on
    QByteArray
        fingerprint;  // of a certificate that the user trusts for good though it is not valid; or empty

    bool operator==(const KnownServer&) const = default;
};

/// A certificate that is not valid and that nobody has trusted yet.
struct CertificateQuestion {
    QString server;  // "host:port", in lower case
    Certificate certificate;
    bool changed = false;  // another one has been trusted for good before
};
enum class CertificateAnswer { Refuse, TrustNow, TrustAlways };

class Component : public QObject {
    Q_OBJECT
 public:
    explicit Component(QObject* parent = nullptr, Deadlines deadlines = {});
    ~Component() override;

    // Properties: plain stored values that the operations read when they are called.
    /// "name", "name:port", "[v6]:port": TLS where the server offers it; with "ftpes://" in front TLS is
    /// demanded, with "ftps://" it comes before the first word (port 990), "ftp://" is plain text.
    QString HostName;
    QString UserName;
    QString Password;
    QString Account;               // for servers that answer 332; may be empty
    QString SourceFileName;        // download, delete: server name; rename: old name; upload: local path
    QString DestinationFileName;   // download: local path; upload: server name; rename: new name
    QString DirectoryName;         // make, remove, change directory
    bool ModeFlagA = false;        // passive data connections
    bool ModeFlagB = false;        // image (binary) type
    std::int16_t SessionMode = 0;  // 1: the session is to be kept alive while idle
    std::optional<std::int64_t> ExpectedSize;  // bytes of the next download, where a listing tells; used once

    /// The native path for a local path as the user knows it, or nothing when it is none: the transfer is
    /// then refused with Error 75. As it stands, paths are native already.
    std::function<std::optional<QByteArray>(const QString& path)> ResolveLocalPath;

    // What is known of servers, by "host:port" in lower case, and the question about a certificate. They are
    // called inside Connect, between two attempts: no gate is up then, and a question may show a modal box.
    // As they stand, nothing is known, nothing is kept, and what is not valid is refused. A session that is
    // dropped while the question is open (SetAction) ends the connect, whatever the answer is.
    std::function<KnownServer(const QString& server)> FindServer;
    std::function<void(const QString& server, const KnownServer& known)> KeepServer;
    std::function<CertificateAnswer(const CertificateQuestion& question)> AskAboutCertificate;

    // Operations. Refused with Error 10036 while another runs, without touching anything.
    // After Shutdown they do nothing.
    void Connect();
    /// 1: SessionMode holds for this session. Until the next connect.
    void SetSessionOption(std::int16_t option);
    std::int16_t SessionOption() const { return session_option_; }
    void ListDirectory();
    void ChangeDirectory();
    void ChangeToParent();
    void MakeDirectory();
    void RemoveDirectory();
    void DeleteFile();
    void RenameFile();
    /// A name from the server that is no plain file name is refused with Error 75 as a local target.
    void GetFile();
    void PutFile();
    void CloseConnection();

    /// Ends the running transfer and keeps the session; nothing without one. May be called inside an
    /// operation. No Progress is raised for that transfer any more.
    void AbortTransfer();

    /// The generic command property: 9 ends the session, 20 brings the component back to its state before any
    /// connect, its properties included. Any other code throws UnknownAction and is not stored. Inside an
    /// operation (a connect under way) both close the session at once, the operation ends as cancelled, and
    /// 20 takes effect before it returns.
    void SetAction(std::int16_t code);
    std::int16_t Action() const { return action_; }

    /// Cancels what runs and closes the session; every later operation returns at once. For closing the
    /// program.
    void Shutdown();

    bool Busy() const { return busy_; }
    bool Connected() const { return connected_; }
    /// "TLSv1.3" or "TLSv1.2" while a session is encrypted, otherwise empty.
    QString TlsVersion() const { return tls_version_; }
    /// Bytes of the running or last transfer as the server itself stated them, if it did; the ExpectedSize of
    /// one that has been taken by a further connection.
    std::optional<std::int64_t> StatedSize() const { return stated_size_; }
    /// During Error: a directory could not be made, perhaps because it is there already. Entering it tells.
    bool NotMade() const { return not_made_; }

 Q_SIGNALS:
    void Debug(const QString& line);    // Ftp1_Debug: a command sent or a reply received
    void DirItem(const QString& line);  // Ftp1_DirItem
    void Progress(std::int64_t bytes);  // Ftp1_Progress: about 20 a second, then the exact end value
    void Error(std::int32_t number, const QString& text);
    void CommandSent(const QString& line);  // for "Last Action:"; also raised as Debug
    void ConnectedChanged(bool connected);  // for "State:"; also when only TlsVersion has changed
    void BusyChanged(bool busy);

 private:
    class Private;
    friend class TransferRun;

    void ForgetProperties();

    std::shared_ptr<Private> d_;
    std::int16_t action_ = 0;
    std::int16_t session_option_ = 0;
    bool busy_ = false;
    bool connected_ = false;
    bool not_made_ = false;
    QString tls_version_;
    std::optional<std::int64_t> stated_size_;
};

/// While one lives, transfers follow one another and the line is kept full. The calls are the same and have
/// the effect that they have one after the other, but more is on its way than the call that runs: steps from
/// folder to folder leave together with what follows them, and small files (below 256 KiB) may go over
/// further connections, where PutFile and GetFile return as soon as one has taken the file. Any other
/// operation waits until these are done. What fails on the way raises Error when it fails, with the file's
/// name; Progress counts a file as moved when it has been taken. The destructor returns when all is over, as
/// an operation does. One at a time, and none inside an operation.
class TransferRun {
 public:
    static constexpr int kLanes = 4;

    /// `lanes`: further connections at most; fewer, without a word, where the server refuses more.
    explicit TransferRun(Component& component, int lanes = kLanes);
    ~TransferRun();
    TransferRun(const TransferRun&) = delete;
    TransferRun& operator=(const TransferRun&) = delete;

 private:
    const QPointer<Component> component_;
};

}  // namespace ftp
