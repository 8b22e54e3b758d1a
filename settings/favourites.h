#pragma once
// The favourite folders: an ordered list of names and folders over the store. UI thread only.

#include <QString>
#include <QStringList>
#include <cstdint>

#include "settings/settings_store.h"

namespace settings {

/// The application name of the favourite folders, and their section.
inline const QString kFavouritesApplication = QStringLiteral("Websmide");
inline const QString kFavouritesSection = QStringLiteral("Favvisar");

struct Favourites {
    QStringList names;
    QStringList folders;     // of the same index; may be shorter or longer where values are missing
    std::int16_t count = 0;  // as stored, whatever is there: "-5" is -5, what is no number is 0
};

/// Empty names and folders are left out, each by itself. Where nothing has been stored, and where the list
/// was saved empty, the program's own three folders are stored first.
Favourites LoadFavourites(Store& store);

/// Replaces the list, in one change of the file. As many folders are stored as there are names, empty ones
/// where there are fewer. What a longer list has left at higher indexes stays.
void SaveFavourites(Store& store, const QStringList& names, const QStringList& folders);

/// Adds one at the end; neither may be empty, or nothing is added. Where nothing has been stored yet the
/// program's own folders come first; a list that was saved empty begins with the new one. Every name keeps
/// the folder of its index; what misses either is dropped from the list. A count that is no number, or a
/// negative one, costs nothing: the list is then what is stored from index 0 up to the first index with
/// neither.
void AppendFavourite(Store& store, const QString& name, const QString& folder);

}  // namespace settings
