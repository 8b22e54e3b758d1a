#include "settings/profiles.h"

#include <algorithm>

#include "settings/leading_number.h"

namespace settings {
namespace {

// Far more than anybody keeps; a ruined count must not fill the memory.
constexpr int kMaxProfiles = 10'000;
constexpr int kRememberedFolders = 101;

const QString kGeneral = QStringLiteral("general");
const QString kCount = QStringLiteral("antal");
const QString kName = QStringLiteral("namn");
const QString kHost = QStringLiteral("host");
const QString kUser = QStringLiteral("user");
const QString kPassword = QStringLiteral("pass");
const QString kAccount = QStringLiteral("acco");
const QString kFolders = QStringLiteral("dir");

QString Section(int profile) {
    return QString::number(profile);
}
QString FolderKey(int n) {
    return QString::number(n) + QStringLiteral("dir");
}

QString Get(const Store& store, const QString& section, const QString& key) {
    return store.GetSetting(kFtpApplication, section, key);
}

void Save(Store& store, const QString& section, const QString& key, const QString& value) {
    store.SaveSetting(kFtpApplication, section, key, value);
}

int ProfileCount(const Store& store) {
    return LeadingNumber(Get(store, kGeneral, kCount), 0, kMaxProfiles).value_or(0);
}

void SaveProfileCount(Store& store, int count) {
    Save(store, kGeneral, kCount, QString::number(count));
}

}  // namespace

QStringList LoadProfileNames(const Store& store) {
    QStringList names;
    for (int n = 0, count = ProfileCount(store); n < count; ++n) {
        names += Get(store, Section(n), kName);
    }
    return names;
}

Profile LoadProfile(const Store& store, int n) {
    const QString section = Section(n);
    return {Get(store, section, kHost), Get(store, section, kUser), Get(store, section, kPassword),
            Get(store, section, kAccount)};
}

void SaveNewProfile(Store& store, const QString& name, const Profile& profile) {
    const Store::Batch batch(store);
    const int count = ProfileCount(store);
    const QString section = Section(count);
    Save(store, section, kHost, profile.host);
    Save(store, section, kUser, profile.user);
    Save(store, section, kPassword, profile.password);
    Save(store, section, kAccount, profile.account);
    Save(store, section, kName, name);
    SaveProfileCount(store, count + 1);
}

void LowerProfileCount(Store& store) {
    SaveProfileCount(store, std::max(ProfileCount(store) - 1, 0));
}

void MoveProfilesDown(Store& store, int n, int left) {
    const Store::Batch batch(store);
    // One section past the last profile is read and emptied too; what it holds is empty, or another running
    // program's new profile, which thus moves down with the others.
    for (int i = n + 1; i <= left + 1; ++i) {
        for (const QString& key : {kName, kUser, kPassword, kHost, kAccount}) {
            const QString value = Get(store, Section(i), key);
            Save(store, Section(i), key, {});
            Save(store, Section(i - 1), key, value);
        }
    }
}

void SaveDirectoryHistory(Store& store, const QStringList& folders) {
    const Store::Batch batch(store);
    for (int i = 0; i < kRememberedFolders; ++i) {
        Save(store, kFolders, FolderKey(i), folders.value(i));
    }
}

QStringList LoadDirectoryHistory(const Store& store) {
    QStringList folders;
    for (int i = 0; i < kRememberedFolders; ++i) {
        const QString folder = Get(store, kFolders, FolderKey(i));
        if (!folder.isEmpty()) {
            folders += folder;
        }
    }
    return folders;
}

}  // namespace settings
