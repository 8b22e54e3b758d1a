#include "settings/settings_store.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <map>
#include <utility>
#include <vector>

#include "platform/drive_path.h"
#include "platform/whole_file.h"
#include "settings/settings_file.h"

namespace settings {
namespace {

using platform::FileResult;

constexpr int kInvalidFormat = 321;  // the classic number

QString Reason(FileResult result) {
    switch (result) {
        case FileResult::NotFound:
            return QStringLiteral("filen finns inte.");
        case FileResult::DiskFull:
            return QStringLiteral("disken är full.");
        case FileResult::Denied:
            return QStringLiteral("åtkomst nekad.");
        default:
            return QStringLiteral("fel i sökvägen.");
    }
}

QString TheFile(const QByteArray& path) {
    return QStringLiteral("filen ") + platform::FromNative(path);
}

QByteArray DefaultFolder() {
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return QFile::encodeName(base + QStringLiteral("/websmide"));
}

void Lay(const Sections& upper, Sections& lower) {
    for (auto section = upper.begin(); section != upper.end(); ++section) {
        lower[section.key()].insert(*section);
    }
}

}  // namespace

class Store::Private {
 public:
    explicit Private(const QString& folder)
        : folder_(folder.isEmpty() ? DefaultFolder() : QFile::encodeName(QDir::cleanPath(folder))) {}

    struct Application {
        QByteArray path;
        Sections values;   // the last that was understood on the disk, with `pending` laid over it
        Sections pending;  // not on the disk yet
        bool read = false;
        std::optional<platform::FileStamp> stamp;  // of the state that was read
        FileResult state = FileResult::Done;       // what reading it came to
    };

    Application& Fresh(const QString& name);
    void Flush(Application& application);
    void FlushAll();
    void Deliver();

    int batches = 0;
    ProblemHandler handler;

 private:
    void Read(Application& application);
    FileResult Understand(Application& application, const QByteArray& bytes);
    void Report(int number, const QString& text) { problems_.emplace_back(number, text); }

    const QByteArray folder_;
    std::map<QString, Application> applications_;
    std::vector<std::pair<int, QString>> problems_;  // not yet told
};

// The application's values as they are now: read at first use, and again when another program has changed the
// file.
Store::Private::Application& Store::Private::Fresh(const QString& name) {
    Application& application = applications_[name];
    if (!application.read) {
        application.path = folder_ + '/' + FileName(name);
    }
    if (!application.read || application.stamp != platform::StampOf(application.path)) {
        Read(application);
    }
    return application;
}

// A file that is gone or ruined takes nothing from the running program: what it knew stays, and goes into the
// new file with the next change.
void Store::Private::Read(Application& application) {
    application.read = true;
    application.stamp = platform::StampOf(application.path);
    const auto [result, bytes] = platform::ReadWholeFile(application.path, kMaxFileSize + 1);
    FileResult state = result;
    if (result == FileResult::Done) {
        state = Understand(application, bytes);
    } else if (result == FileResult::NotFound) {
        state = FileResult::Done;
    } else if (result != application.state) {
        Report(static_cast<int>(result), QStringLiteral("Inställningarna i ") + TheFile(application.path) +
                                             QStringLiteral(" gick inte att läsa: ") + Reason(result));
    }
    application.state = state;
}

// What cannot be understood is set aside, for somebody to look into.
FileResult Store::Private::Understand(Application& application, const QByteArray& bytes) {
    if (auto values = Parse(bytes)) {
        application.values = std::move(*values);
        Lay(application.pending, application.values);
        return FileResult::Done;
    }
    QByteArray aside;
    const FileResult result = platform::SetFileAside(application.path, ".trasig-", aside);
    const bool moved = result == FileResult::Done;
    if (moved) {
        // It holds passwords, and its permissions may be anything.
        QFile::setPermissions(QFile::decodeName(aside), QFile::ReadOwner | QFile::WriteOwner);
    }
    if (moved || result != application.state) {
        Report(kInvalidFormat,
               QStringLiteral("Inställningarna i ") + TheFile(application.path) +
                   QStringLiteral(" är trasiga. ") +
                   (moved ? QStringLiteral("De ligger kvar i ") + TheFile(aside) + u'.'
                          : QStringLiteral("Filen gick inte att flytta undan: ") + Reason(result)));
    }
    application.stamp = platform::StampOf(application.path);
    return result;
}

void Store::Private::Flush(Application& application) {
    if (application.pending.isEmpty()) {
        return;
    }
    FileResult result = platform::MakePrivateFolder(folder_);
    // No other running program may come between the reading and the writing.
    const platform::FolderLock lock(folder_);
    if (result == FileResult::Done) {
        Read(application);
        result = application.state;
    }
    if (result == FileResult::Done) {
        const QByteArray bytes = Serialise(application.values);
        result = bytes.size() > kMaxFileSize ? FileResult::DiskFull
                                             : platform::ReplaceWholeFile(application.path, bytes);
    }
    if (result == FileResult::Done) {
        application.pending.clear();
        application.stamp = platform::StampOf(application.path);
    } else {
        Report(static_cast<int>(result), QStringLiteral("Inställningarna gick inte att spara i ") +
                                             TheFile(application.path) + QStringLiteral(": ") +
                                             Reason(result));
    }
}

void Store::Private::FlushAll() {
    for (auto& [name, application] : applications_) {
        Flush(application);
    }
}

// Only here is the handler called, when nothing is locked and no value is half way.
void Store::Private::Deliver() {
    while (handler && !problems_.empty()) {
        const auto [number, text] = problems_.front();
        problems_.erase(problems_.begin());
        handler(number, text);
    }
}

Store::Store(const QString& folder) : d_(std::make_unique<Private>(folder)) {}
Store::~Store() = default;

void Store::OnProblem(ProblemHandler handler) {
    d_->handler = std::move(handler);
    d_->Deliver();
}

QString Store::GetSetting(const QString& application, const QString& section, const QString& key) const {
    const QString value = d_->Fresh(application).values.value(section).value(key);
    d_->Deliver();
    return value;
}

void Store::SaveSetting(const QString& application, const QString& section, const QString& key,
                        const QString& value) {
    Private::Application& target = d_->Fresh(application);
    auto& keys = target.values[section];
    if (!keys.contains(key) || keys.value(key) != value) {
        keys[key] = value;
        target.pending[section][key] = value;
        if (d_->batches == 0) {
            d_->Flush(target);
        }
    }
    d_->Deliver();
}

Store::Batch::Batch(Store& store) : store_(store) {
    ++store_.d_->batches;
}

Store::Batch::~Batch() {
    if (--store_.d_->batches == 0) {
        store_.d_->FlushAll();
        store_.d_->Deliver();
    }
}

}  // namespace settings
