#pragma once
// Connection profiles and remembered folders: numbering and key rules over the store. UI thread only.

#include <QString>
#include <QStringList>

#include "settings/settings_store.h"

namespace settings {

struct Profile {
    QString host, user, password, account;
    bool operator==(const Profile&) const = default;
};

/// The names of profiles 0 to "antal" - 1, empty ones included.
QStringList LoadProfileNames(const Store& store);
Profile LoadProfile(const Store& store, int n);

/// Appends a profile; the name's uniqueness is the caller's business.
void SaveNewProfile(Store& store, const QString& name, const Profile& profile);

/// Removes profile n, in two steps with the combo box between them: the count goes down at once ...
void LowerProfileCount(Store& store);
/// ... and the later profiles move down one section; `left` is the number of profiles left.
void MoveProfilesDown(Store& store, int n, int left);

/// Always 101 keys, "0dir" to "100dir".
void SaveDirectoryHistory(Store& store, const QStringList& folders);
QStringList LoadDirectoryHistory(const Store& store);

}  // namespace settings
