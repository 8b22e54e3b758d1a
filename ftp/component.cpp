#include "ftp/component.h"

#include <QFile>
#include <algorithm>
#include <utility>

#include "ftp/component_private.h"
#include "ftp/engine/wire/local_name.h"

namespace ftp {
namespace {

constexpr std::int16_t kDisconnect = 9;
constexpr std::int16_t kReinitialise = 20;
constexpr std::int32_t kInvalidPropertyValue = 380;  // the classic run-time number

QString LastName(const QString& path) {
    return path.mid(std::max(path.lastIndexOf(u'\\'), path.lastIndexOf(u'/')) + 1);
}

/// A server may send any text as a name. One that would lead out of the chosen folder is no name for a file
/// here.
bool IsSafeTarget(const QString& path, const QString& server_name) {
    const bool named_by_server = path.endsWith(server_name);
    return IsPlainName(LastName(path).toStdString()) &&
           (!named_by_server || IsPlainName(server_name.toStdString()));
}

}  // namespace

UnknownAction::UnknownAction(std::int32_t number, const QString& description)
    : std::runtime_error(description.toStdString()), number_(number), description_(description) {}

Component::Component(QObject* parent, Deadlines deadlines)
    : QObject(parent),
      ResolveLocalPath(&QFile::encodeName),
      FindServer([](const QString&) { return KnownServer(); }),
      KeepServer([](const QString&, const KnownServer&) {}),
      AskAboutCertificate([](const CertificateQuestion&) { return CertificateAnswer::Refuse; }),
      d_(std::make_shared<Private>(*this, deadlines)) {}

Component::~Component() {
    d_->Detach();
}

void Component::Connect() {
    if (!d_->MayStart()) return;
    d_->Connect({.host_field = HostName.toStdString(),
                 .user = UserName.toStdString(),
                 .password = Password.toStdString(),
                 .account = Account.toStdString()});
}

void Component::SetSessionOption(std::int16_t option) {
    if (d_->MayStart()) session_option_ = option;
}

void Component::ListDirectory() {
    if (d_->MayStart()) d_->Run(List{});
}

void Component::ChangeDirectory() {
    if (d_->MayStart()) d_->Run(ftp::ChangeDirectory{d_->codec.Encode(DirectoryName)});
}

void Component::ChangeToParent() {
    if (d_->MayStart()) d_->Run(ftp::ChangeToParent{});
}

void Component::MakeDirectory() {
    if (d_->MayStart()) d_->Run(ftp::MakeDirectory{d_->codec.Encode(DirectoryName)});
}

void Component::RemoveDirectory() {
    if (d_->MayStart()) d_->Run(ftp::RemoveDirectory{d_->codec.Encode(DirectoryName)});
}

void Component::DeleteFile() {
    if (d_->MayStart()) d_->Run(ftp::DeleteFile{d_->codec.Encode(SourceFileName)});
}

void Component::RenameFile() {
    if (!d_->MayStart()) return;
    d_->Run(ftp::RenameFile{.from = d_->codec.Encode(SourceFileName),
                            .to = d_->codec.Encode(DestinationFileName)});
}

void Component::GetFile() {
    if (!d_->MayStart()) return;
    const auto target = IsSafeTarget(DestinationFileName, SourceFileName)
                            ? ResolveLocalPath(DestinationFileName)
                            : std::nullopt;
    if (!target) return d_->RefusePath(DestinationFileName);
    const std::string remote = d_->codec.Encode(SourceFileName);
    d_->Run(Retrieve{.remote = remote,
                     .local_path = target->toStdString(),
                     .label = NameCodec::Text(remote).toStdString(),  // as it was before it got its marks
                     .size = std::exchange(ExpectedSize, std::nullopt)},
            DestinationFileName);
}

void Component::PutFile() {
    if (!d_->MayStart()) return;
    const auto source = ResolveLocalPath(SourceFileName);
    if (!source) return d_->RefusePath(SourceFileName);
    d_->Run(Store{.local_path = source->toStdString(),
                  .remote = d_->codec.Encode(DestinationFileName),
                  .label = SourceFileName.toStdString()},
            SourceFileName);
}

void Component::CloseConnection() {
    if (d_->MayStart()) d_->Run(Quit{});
}

void Component::AbortTransfer() {
    d_->AbortTransfer();
}

void Component::SetAction(std::int16_t code) {
    if (code != kDisconnect && code != kReinitialise) {
        throw UnknownAction(kInvalidPropertyValue,
                            QStringLiteral("Ogiltigt värde för egenskapen action: %1").arg(code));
    }
    action_ = code;
    if (busy_) {
        code == kDisconnect ? d_->DropSession() : d_->DropAndReset();
    } else if (d_->MayStart()) {
        code == kDisconnect ? d_->Run(Quit{}) : d_->Run(Reset{});
    }
}

void Component::Shutdown() {
    d_->Shutdown();
}

void Component::ForgetProperties() {
    for (QString* text :
         {&HostName, &UserName, &Password, &Account, &SourceFileName, &DestinationFileName, &DirectoryName}) {
        text->clear();
    }
    ModeFlagA = ModeFlagB = false;
    SessionMode = session_option_ = 0;
    ExpectedSize.reset();
    stated_size_.reset();
}

TransferRun::TransferRun(Component& component, int lanes) : component_(&component) {
    if (component.d_->MayStart()) component.d_->BeginRun(lanes);
}

TransferRun::~TransferRun() {
    if (component_ && component_->d_->MayStart()) component_->d_->EndRun();
}

}  // namespace ftp
