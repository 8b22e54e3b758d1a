#include "settings/favourites.h"

#include <limits>
#include <optional>

#include "platform/drive_path.h"
#include "platform/folder.h"
#include "settings/leading_number.h"

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

using CountLimits = std::numeric_limits<std::int16_t>;

std::optional<int> StoredCount(const Store& store) {
    return LeadingNumber(Get(store, kCount), CountLimits::min(), CountLimits::max());
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

// The entries that have both name and folder, each with its own. Where the count says nothing the list
// reaches to the first index that nothing is stored at.
Favourites LoadPairs(const Store& store) {
    const int stored = StoredCount(store).value_or(-1);
    const int count = stored < 0 ? CountLimits::max() : stored;
    Favourites pairs;
    for (int i = 0; i < count; ++i) {
        const QString name = Get(store, NameKey(i));
        const QString folder = Get(store, FolderKey(i));
        if (stored < 0 && name.isEmpty() && folder.isEmpty()) {
            break;
        }
        if (!name.isEmpty() && !folder.isEmpty()) {
            pairs.names += name;
            pairs.folders += folder;
        }
    }
    return pairs;
}

}  // namespace

Favourites LoadFavourites(Store& store) {
    const QString stored = Get(store, kCount);
    if (stored.isEmpty() || stored == kSavedEmpty) {
        SaveDefaults(store);
    }
    Favourites favourites;
    favourites.count = static_cast<std::int16_t>(StoredCount(store).value_or(0));
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
    const QString stored = Get(store, kCount);
    if (stored.isEmpty()) {
        SaveDefaults(store);
    }
    const Favourites pairs = stored == kSavedEmpty ? Favourites() : LoadPairs(store);
    SaveFavourites(store, pairs.names + QStringList(name), pairs.folders + QStringList(folder));
}

}  // namespace settings
