#include "ftp/component_private.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QEventLoop>
#include <QTimerEvent>
#include <algorithm>
#include <chrono>

#include "ftp/engine/wire/address.h"
#include "ftp/error_text.h"
#include "ftp/operation_gate.h"
#include "ftp/visible_text.h"

namespace ftp {
namespace {

using namespace std::chrono_literals;

constexpr auto kDeliverySlice = 12ms;  // then the screen and the user have their turn
constexpr int kSampling = 50;          // milliseconds

constexpr std::int32_t kAlreadyBusy = 10036;  // the classic "operation now in progress"

constexpr std::uint64_t kNoRequest = 0;  // of a file whose own request has finished

const auto kMail = static_cast<QEvent::Type>(QEvent::registerEventType());

bool IsLocal(FailureKind kind) {
    return kind == FailureKind::LocalNotFound || kind == FailureKind::LocalDenied ||
           kind == FailureKind::LocalDiskFull || kind == FailureKind::LocalPath ||
           kind == FailureKind::LocalOther;
}

/// "host:port", in lower case; empty for what is no host field, which the worker then tells.
QString ServerOf(const std::string& host_field) {
    const auto address = ParseHostField(host_field);
    if (!address) return {};
    const auto& [host, port] = address->where;
    const QString name = QString::fromStdString(host).toLower();
    return (name.contains(u':') ? u'[' + name + u']' : name) + u':' + QString::number(port);
}

}  // namespace

Component::Private::Private(Component& component, Deadlines deadlines)
    : component_(&component),
      worker_(std::make_unique<Worker>(
          [this](Notification notification) {
              if (mailbox_.Put(std::move(notification))) QCoreApplication::postEvent(this, new QEvent(kMail));
          },
          deadlines)) {}

bool Component::Private::MayStart() {
    if (shut_down_) return false;
    if (!component_->busy_) return true;
    Raise(&Component::Error, kAlreadyBusy, QStringLiteral("En annan åtgärd pågår redan."));
    return false;
}

void Component::Private::Run(Operation operation, const QString& local_path) {
    const auto self = shared_from_this();
    local_path_ = local_path;
    SetBusy(true);
    {
        const OperationGate gate;
        Perform(std::move(operation));
        if (std::exchange(reset_wanted_, false)) Perform(Reset{});
    }
    if (shut_down_) SetConnected(false);  // the worker may have been between two operations then
    if (shut_down_) mask_.Clear();
    SetBusy(false);
}

void Component::Private::Connect(ftp::Connect request) {
    const auto self = shared_from_this();
    const QString server = ServerOf(request.host_field);
    const KnownServer known = component_->FindServer(server);
    request.had_tls = known.had_tls;
    request.trusted = known.fingerprint.toStdString();
    certificate_.reset();
    may_ask_ = true;
    Run(request);
    may_ask_ = false;
    const std::optional<Failure> not_trusted = std::exchange(not_trusted_, {});
    if (!component_ || shut_down_ || !certificate_) return;
    const Certificate certificate = *certificate_;
    KnownServer now{true, known.fingerprint};
    if (not_trusted) {
        const auto answer = AskAboutCertificate({server, certificate, !known.fingerprint.isEmpty()});
        if (!answer) return;
        if (*answer == CertificateAnswer::Refuse) return RaiseProblem(*not_trusted);
        request.trusted = certificate.fingerprint;
        if (*answer == CertificateAnswer::TrustAlways)
            now.fingerprint = QByteArray::fromStdString(request.trusted);
    } else if (certificate.Valid()) {
        now.fingerprint.clear();  // others vouch for it now, and not the user alone
    }
    if (now != known) component_->KeepServer(server, now);
    if (not_trusted) Run(request);
}

/// What the user says; nothing where the program has ended meanwhile. Who has dropped the session or reset
/// the component while the question was open has given this connect up, whatever the answer is.
std::optional<CertificateAnswer> Component::Private::AskAboutCertificate(
    const CertificateQuestion& question) {
    const std::uint64_t last_request = request_;
    const auto ask = component_->AskAboutCertificate;  // the component may go meanwhile
    const CertificateAnswer answer = ask(question);
    if (!component_ || shut_down_) return std::nullopt;
    return request_ == last_request ? answer : CertificateAnswer::Refuse;
}

void Component::Private::BeginRun(int lanes) {
    in_run_ = true;
    Run(ftp::BeginRun{static_cast<std::size_t>(std::max(lanes, 0))});
}

void Component::Private::EndRun() {
    const auto self = shared_from_this();
    Run(ftp::EndRun{});
    in_run_ = false;
}

void Component::Private::Perform(Operation operation) {
    if (!component_ || shut_down_) return;
    Prepare(operation);
    const bool leaves = std::holds_alternative<Quit>(operation) || std::holds_alternative<Reset>(operation);
    running_ = true;
    worker_->Start({.id = ++request_,
                    .operation = std::move(operation),
                    .passive = component_->ModeFlagA,
                    .image = component_->ModeFlagB,
                    .keep_alive = component_->SessionMode == 1 && component_->session_option_ == 1});
    AwaitEnd();
    if (leaves) mask_.Clear();  // nothing leads back to that server
}

/// Not a QEventLoop::exec: quitting the application is to end the main loop, not this wait.
void Component::Private::AwaitEnd() {
    auto* const dispatcher = QAbstractEventDispatcher::instance();
    dispatcher->wakeUp();  // else events posted before may lie until the next one comes
    while (running_) dispatcher->processEvents(QEventLoop::WaitForMoreEvents);
    dispatcher->wakeUp();  // else the main loop may sleep over a quit that came meanwhile
}

void Component::Private::Prepare(const Operation& operation) {
    if (const auto* connect = std::get_if<ftp::Connect>(&operation)) {
        codec.Reset();
        mask_.Set(connect->user, {connect->password, connect->account});
        component_->session_option_ = 0;
    }
    if (std::holds_alternative<Reset>(operation)) component_->ForgetProperties();
    if (std::holds_alternative<List>(operation)) codec.NewListing();
    download_ = std::holds_alternative<Retrieve>(operation);
    counting_ = download_ || std::holds_alternative<Store>(operation);
    if (counting_) component_->stated_size_.reset();
    reported_ = 0;
}

void Component::Private::RefusePath(const QString& path) {
    const auto [number, text] =
        DescribeFailure({.kind = FailureKind::LocalPath, .code = 0, .detail = {}}, path);
    Raise(&Component::Error, number, text);
}

void Component::Private::AbortTransfer() {
    if (!running_ && !in_run_) return;
    counting_ = false;  // the strip now shows what the abort has put there
    sampling_.stop();
    worker_->AbortTransfer();
}

void Component::Private::DropSession() {
    if (worker_) worker_->DropSession();
}

void Component::Private::DropAndReset() {
    reset_wanted_ = true;
    DropSession();
}

void Component::Private::Shutdown() {
    if (std::exchange(shut_down_, true)) return;
    DropSession();
    if (running_) return;  // what runs ends as cancelled, and may still have something to say
    SetConnected(false);
    mask_.Clear();
}

void Component::Private::Detach() {
    component_ = nullptr;
    running_ = false;
    delivery_.stop();
    sampling_.stop();
    worker_.reset();
}

bool Component::Private::event(QEvent* event) {
    if (event->type() != kMail) return QObject::event(event);
    // Delivered by a timer, not here: posted events would have no end while the worker keeps posting.
    if (component_ && !delivery_.isActive()) delivery_.start(0, this);
    return true;
}

void Component::Private::timerEvent(QTimerEvent* event) {
    const auto self = shared_from_this();  // between the calls of a run nobody else holds it
    if (event->timerId() == delivery_.timerId()) Deliver();
    if (event->timerId() == sampling_.timerId()) SampleProgress();
}

void Component::Private::Deliver() {
    mailbox_.TakeAll(undelivered_);
    const QDeadlineTimer slice(kDeliverySlice);
    while (component_ && !undelivered_.empty() && !slice.hasExpired()) DeliverNext();
    if (undelivered_.empty()) delivery_.stop();
}

void Component::Private::DeliverNext() {
    // A handler may come back here through an event loop of its own, so nothing is held across an event.
    Notification& next = undelivered_.front();
    auto* const batch = std::get_if<ListingBatch>(&next.what);
    if (next.request == request_ && batch && next_line_ < batch->lines.size()) {
        Raise(&Component::DirItem, codec.DecodeListing(batch->lines[next_line_++]));
        return;
    }
    const Notification whole = std::move(next);
    undelivered_.pop_front();
    next_line_ = 0;
    const bool current = whole.request == request_ || whole.request == kNoRequest;
    if (current) std::visit([this](const auto& what) { On(what); }, whole.what);
}

void Component::Private::On(const ftp::CommandSent& command) {
    const QString line = codec.Decode(mask_.Command(command.line));
    Raise(&Component::CommandSent, line);
    Raise(&Component::Debug, line);
}

void Component::Private::On(const ReplyLine& reply) {
    Raise(&Component::Debug, codec.Decode(mask_.Reply(reply.line)));
}

void Component::Private::On(const ListingBatch&) {
    worker_->BatchTaken();
}

void Component::Private::On(const TransferStarted& transfer) {
    if (!counting_) return;
    if (download_ && transfer.size) component_->stated_size_ = transfer.size;
    if (!sampling_.isActive()) sampling_.start(kSampling, this);
}

void Component::Private::On(const TlsAgreed& tls) {
    certificate_ = tls.certificate;
}

void Component::Private::On(const SessionChanged& session) {
    SetConnected(session.connected, QString::fromStdString(session.tls));
}

void Component::Private::On(const Problem& problem) {
    if (may_ask_ && problem.failure.kind == FailureKind::NotTrusted) {
        not_trusted_ = problem.failure;
        return;
    }
    sampling_.stop();
    if (counting_) SampleProgress();
    if (component_) component_->not_made_ = problem.not_made;
    RaiseProblem(problem.failure);
    if (component_) component_->not_made_ = false;
}

void Component::Private::RaiseProblem(const Failure& failure) {
    const auto [number, text] = DescribeFailure(failure, WordsOf(failure, local_path_));
    Raise(&Component::Error, number, text);
}

void Component::Private::On(const FileProblem& problem) {
    const QString label = QString::fromStdString(problem.label);
    const bool local = IsLocal(problem.failure.kind);
    const auto [number, text] = DescribeFailure(problem.failure, WordsOf(problem.failure, label));
    Raise(&Component::Error, number, local ? text : text + QStringLiteral(" [%1]").arg(VisibleText(label)));
}

void Component::Private::On(const Finished&) {
    EndProgress();
    running_ = false;
}

void Component::Private::SampleProgress() {
    const std::int64_t bytes = worker_->BytesTransferred();
    if (std::exchange(reported_, bytes) != bytes) Raise(&Component::Progress, bytes);
}

void Component::Private::EndProgress() {
    if (!sampling_.isActive()) return;
    sampling_.stop();
    Raise(&Component::Progress, worker_->BytesTransferred());
}

void Component::Private::SetBusy(bool busy) {
    if (!component_) return;
    component_->busy_ = busy;
    Raise(&Component::BusyChanged, busy);
}

void Component::Private::SetConnected(bool connected, const QString& tls_version) {
    if (!component_) return;
    const QString tls = connected ? tls_version : QString();
    const bool same = component_->connected_ == connected && component_->tls_version_ == tls;
    component_->connected_ = connected;
    component_->tls_version_ = tls;
    if (!same) Raise(&Component::ConnectedChanged, connected);
}

QString Component::Private::WordsOf(const Failure& failure, const QString& local_path) const {
    return IsLocal(failure.kind) ? local_path : NameCodec::Text(mask_.Words(failure.detail));
}

}  // namespace ftp
