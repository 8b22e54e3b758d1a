#include "settings/favourites.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string>

#include "platform/drive_path.h"
#include "platform/folder.h"

namespace settings {
namespace {

const QString kCount = QStringLiteral("Antal");
const QString kSavedEmpty = QStringLiteral("stopp!");  // in place of a count

QString NameKey(qsizetype i) {
    return QStringLiteral("favvis_namn") + QString::number(i);
}
QString FolderKey(qsizetype i) {
    return QStringLiteral("favvis_dir") + QString::number(i);
}

QString Get(const Store& store, const QString& key) {
    return store.GetSetting(kFavouritesApplication, kFavouritesSection, key);
}

void Save(Store& store, const QString& key, const QString& value) {
    store.SaveSetting(kFavouritesApplication, kFavouritesSection, key, value);
}

// The number that the text begins with, blanks skipped; the nearest there is where it is too large.
std::int16_t Number(QString text) {
    std::string digits = text.remove(u' ').toStdString();
    digits.erase(0, digits.starts_with('+') ? 1 : 0);
    std::int16_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc::result_out_of_range) {
        return number;
    }
    using Limits = std::numeric_limits<std::int16_t>;
    return digits.starts_with('-') ? Limits::min() : Limits::max();
}

void SaveDefaults(Store& store) {
    const QString program = platform::ProgramFolder();
    SaveFavourites(store,
                   {QStringLiteral("Websmide's katalog"), QStringLiteral("Websmide's mallar"),
                    QStringLiteral("Websmide's projekt")},
                   {program, platform::Join(program, QStringLiteral("mallar")),
                    platform::Join(program, QStringLiteral("program"))});
}

void AppendUnlessEmpty(QStringList& list, const QString& value) {
    if (!value.isEmpty()) {
        list += value;
    }
}

}  // namespace

Favourites LoadFavourites(Store& store) {
    const QString stored = Get(store, kCount);
    if (stored.isEmpty() || stored == kSavedEmpty) {
        SaveDefaults(store);
    }
    Favourites favourites;
    favourites.count = Number(Get(store, kCount));
    for (int i = 0; i < favourites.count; ++i) {
        AppendUnlessEmpty(favourites.names, Get(store, NameKey(i)));
        AppendUnlessEmpty(favourites.folders, Get(store, FolderKey(i)));
    }
    return favourites;
}

void SaveFavourites(Store& store, const QStringList& names, const QStringList& folders) {
    const Store::Batch batch(store);
    Save(store, kCount, names.isEmpty() ? kSavedEmpty : QString::number(names.size()));
    for (qsizetype i = 0; i < names.size(); ++i) {
        Save(store, NameKey(i), names[i]);
        Save(store, FolderKey(i), folders.value(i));
    }
}

void AppendFavourite(Store& store, const QString& name, const QString& folder) {
    if (name.isEmpty() || folder.isEmpty()) {
        return;
    }
    const Store::Batch batch(store);
    Favourites favourites = Get(store, kCount) == kSavedEmpty ? Favourites() : LoadFavourites(store);
    // Name and folder must get the same index, whatever is missing before them.
    const qsizetype pairs = std::min(favourites.names.size(), favourites.folders.size());
    SaveFavourites(store, favourites.names.first(pairs) << name, favourites.folders.first(pairs) << folder);
}

}  // namespace settings
