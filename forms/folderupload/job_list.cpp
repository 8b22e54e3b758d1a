#include "forms/folderupload/job_list.h"

namespace forms {

void JobList::Clear() {
    lines_.Clear();
    names_.clear();
    overwrites_.clear();
    places_.assign(1, {});
    here_ = 0;
}

int JobList::NewPlace(int parent) {
    places_.emplace_back().parent = parent;
    return static_cast<int>(places_.size()) - 1;
}

// The very first line is never carried out. Above where the upload begins there are folders, too.
void JobList::AddUp(int times) {
    for (int i = 0; i < times; ++i) {
        const bool skipped = Count() == 0;
        lines_.Add(kUpLine);
        if (skipped) continue;
        int above = places_[static_cast<std::size_t>(here_)].parent;
        if (above < 0) {
            above = NewPlace(-1);
            places_[static_cast<std::size_t>(here_)].parent = above;
        }
        here_ = above;
    }
}

void JobList::AddFolder(const QString& name) {
    lines_.Add(kFolderLine + name);
    const int known = places_[static_cast<std::size_t>(here_)].folders.value(name, -1);
    const int place = known >= 0 ? known : NewPlace(here_);
    places_[static_cast<std::size_t>(here_)].folders.insert(name, place);
    here_ = place;
}

void JobList::AddFile(const QString& folder_with_slash, const QString& name) {
    const int row = Count();
    const QString sent_as = name.toLower();
    lines_.Add(kFileLine + folder_with_slash + sent_as);
    if (sent_as != name) names_.insert(row, name);
    QHash<QString, int>& files = places_[static_cast<std::size_t>(here_)].files;
    const auto earlier = files.constFind(sent_as);
    if (earlier != files.constEnd()) overwrites_.push_back({*earlier, row});
    files.insert(sent_as, row);
}

// Only ever the end of a walk: no line comes after it.
void JobList::RemoveLast() {
    const int row = Count() - 1;
    lines_.Remove(row);
    names_.remove(row);
    if (!overwrites_.empty() && overwrites_.back().later == row) overwrites_.pop_back();
}

QString JobList::SourceOf(int row) const {
    const QString path = Line(row).mid(kFileLine.size());
    const auto name = names_.constFind(row);
    return name == names_.constEnd() ? path : path.left(path.lastIndexOf(u'\\') + 1) + *name;
}

}  // namespace forms
