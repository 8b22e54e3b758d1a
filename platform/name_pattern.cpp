#include <algorithm>

#include "platform/folder.h"

namespace platform {
namespace {

using Characters = QList<uint>;

// Walks name and pattern together; after a mismatch the last "*" takes one character more.
bool MatchesOne(const Characters& name, const Characters& pattern) {
    qsizetype n = 0, p = 0, star = -1, star_end = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            star_end = n;
        } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == name[n])) {
            ++n;
            ++p;
        } else if (star >= 0) {
            p = star + 1;
            n = ++star_end;
        } else {
            return false;
        }
    }
    return std::all_of(pattern.begin() + p, pattern.end(), [](uint c) { return c == '*'; });
}

}  // namespace

bool MatchesPattern(const QString& name, const QString& patterns) {
    const Characters characters = name.toLower().toUcs4();
    bool any_pattern = false;
    for (const QString& part : patterns.split(u';')) {
        const QString pattern = part.trimmed().toLower();
        if (pattern.isEmpty()) {
            continue;
        }
        if (pattern == QStringLiteral("*.*") || MatchesOne(characters, pattern.toUcs4())) {
            return true;
        }
        any_pattern = true;
    }
    return !any_pattern;
}

}  // namespace platform
