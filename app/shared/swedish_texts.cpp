#include "app/shared/swedish_texts.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace app {
namespace {

struct Entry {
    std::string_view english;
    const char* swedish;
};

constexpr std::array kTexts{
    Entry{"&Undo", "&Ångra"},
    Entry{"&Redo", "&Gör om"},
    Entry{"Cu&t", "Klipp &ut"},
    Entry{"&Copy", "&Kopiera"},
    Entry{"&Paste", "Kl&istra in"},
    Entry{"Delete", "Ta bort"},
    Entry{"Select All", "Markera allt"},
};

}  // namespace

QString SwedishTexts::translate(const char* context, const char* text, const char*, int) const {
    const std::string_view place = context;
    if (place != "QLineEdit" && place != "QWidgetTextControl") return {};
    const auto entry = std::ranges::find(kTexts, std::string_view(text), &Entry::english);
    return entry == kTexts.end() ? QString() : QString::fromUtf8(entry->swedish);
}

}  // namespace app
