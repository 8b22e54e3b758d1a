#include "forms/transfer/queue_model.h"

#include <QGuiApplication>
#include <QPalette>

// The pictures lie in a static library, where nothing else refers to them.
static void RegisterPictures() {
    Q_INIT_RESOURCE(transfer);
}

namespace forms {
namespace {

constexpr int kMostPlaces = 64;  // in the text of an error, where the name of a file may begin

QIcon Picture(const char* name) {
    return QIcon(QStringLiteral(":/transfer/%1.svg").arg(QLatin1String(name)));
}

}  // namespace

QString NameOf(EntryState state) {
    switch (state) {
        case EntryState::Running:
            return QStringLiteral("pågår");
        case EntryState::Done:
            return QStringLiteral("klar");
        case EntryState::Failed:
            return QStringLiteral("misslyckades");
        case EntryState::Waiting:
            break;
    }
    return QStringLiteral("väntar");
}

QueueModel::QueueModel(QObject* parent) : LineModel(parent) {
    RegisterPictures();
    pictures_ = {Picture("waiting"), Picture("running"), Picture("done"), Picture("failed")};
}

void QueueModel::SetEntries(const QStringList& lines, const QStringList& files) {
    states_.assign(static_cast<std::size_t>(lines.size()), EntryState::Waiting);
    counts_ = {static_cast<int>(lines.size())};
    files_ = files;
    begun_.clear();
    begun_before_.assign(static_cast<std::size_t>(files.size()), -1);
    SetLines(lines);
}

EntryState QueueModel::State(int row) const {
    const bool known = row >= 0 && static_cast<std::size_t>(row) < states_.size();
    return known ? states_[static_cast<std::size_t>(row)] : EntryState::Waiting;
}

void QueueModel::SetState(int row, EntryState state) {
    const bool known = row >= 0 && static_cast<std::size_t>(row) < states_.size();
    if (!known || State(row) == state) return;
    if (state != EntryState::Waiting) NoteBegun(row);
    --CountOf(states_[static_cast<std::size_t>(row)]);
    states_[static_cast<std::size_t>(row)] = state;
    ++CountOf(state);
    Q_EMIT StateChanged(row);
}

QString QueueModel::Tally() const {
    const auto [waiting, running, done, failed] = counts_;
    QStringList parts{QStringLiteral("%1 %2").arg(done).arg(done == 1 ? NameOf(EntryState::Done)
                                                                      : QStringLiteral("klara"))};
    if (failed > 0) parts.append(QStringLiteral("%1 %2").arg(failed).arg(NameOf(EntryState::Failed)));
    parts.append(QStringLiteral("%1 %2").arg(waiting).arg(NameOf(EntryState::Waiting)));
    return parts.join(QStringLiteral(", "));
}

// The rows are begun in their order.
void QueueModel::NoteBegun(int row) {
    if (row >= files_.size()) return;
    const int before = begun_.value(files_[row], -1);
    if (before >= row) return;
    begun_before_[static_cast<std::size_t>(row)] = before;
    begun_.insert(files_[row], row);
}

int QueueModel::BegunRow(const QString& file) const {
    const int last = begun_.value(file, -1);
    int row = last;
    while (row >= 0 && State(row) == EntryState::Failed) row = begun_before_[static_cast<std::size_t>(row)];
    return row >= 0 ? row : last;
}

// The name stands at the end, either in brackets or after a colon; what stands before it, and the name
// itself, may hold both.
int QueueModel::RowOfError(const QString& text) const {
    const auto look = [&](const QString& opening, const QString& whole) {
        qsizetype place = whole.indexOf(opening);
        for (int i = 0; place >= 0 && i < kMostPlaces; ++i, place = whole.indexOf(opening, place + 1))
            if (const int row = BegunRow(whole.mid(place + opening.size())); row >= 0) return row;
        return -1;
    };
    const int bracketed = text.endsWith(u']') ? look(QStringLiteral(" ["), text.chopped(1)) : -1;
    return bracketed >= 0 ? bracketed : look(QStringLiteral(": "), text);
}

QVariant QueueModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const EntryState state = State(index.row());
    switch (role) {
        case Qt::DecorationRole:
            return pictures_[static_cast<std::size_t>(state)];
        case Qt::ForegroundRole:
            if (state != EntryState::Done) return {};
            return QGuiApplication::palette().brush(QPalette::PlaceholderText);
        case Qt::AccessibleTextRole:
            return QString(At(index.row()) + QStringLiteral(", ") + NameOf(state));
        case Qt::AccessibleDescriptionRole:
            return NameOf(state);
        default:
            return LineModel::data(index, role);
    }
}

}  // namespace forms
