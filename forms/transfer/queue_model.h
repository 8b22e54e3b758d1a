#pragma once
// The queue of the transfer window: the files of a batch, and how each of them stands. UI thread only.

#include <QHash>
#include <QIcon>
#include <array>
#include <cstdint>
#include <vector>

#include "toolkit/lists.h"

namespace forms {

/// Done: its transfer has been called and told of no error. A small file may then still be on its way, over a
/// connection of its own; where that fails, Done becomes Failed.
enum class EntryState : std::uint8_t { Waiting, Running, Done, Failed };

/// "väntar", "pågår", "klar", "misslyckades"
QString NameOf(EntryState state);

/// The texts of the rows are those that they are given; the state shows as a picture before the text, in its
/// colour, and in what the row is called to those who cannot see it. A changed state is told by StateChanged
/// and not as changed data, which would lay out all rows again: 100,000 of them change one after the other.
class QueueModel : public toolkit::LineModel {
    Q_OBJECT
 public:
    explicit QueueModel(QObject* parent = nullptr);

    /// All waiting. `files` are what the component's errors call them by, one a row.
    void SetEntries(const QStringList& lines, const QStringList& files);
    EntryState State(int row) const;
    /// Rows that are no more are left alone.
    void SetState(int row, EntryState state);
    /// How many there are of each, in words: "3 klara, 1 misslyckades, 96 väntar".
    QString Tally() const;
    /// The row of the file that the text of an error names; -1 where it names none that has been begun. Of
    /// several files of that name, the last one begun that has not failed.
    int RowOfError(const QString& text) const;

    QVariant data(const QModelIndex& index, int role) const override;

 Q_SIGNALS:
    void StateChanged(int row);

 private:
    int& CountOf(EntryState state) { return counts_[static_cast<std::size_t>(state)]; }
    void NoteBegun(int row);
    int BegunRow(const QString& file) const;

    std::array<QIcon, 4> pictures_;
    std::vector<EntryState> states_;
    std::array<int, 4> counts_{};  // of each state
    QStringList files_;
    QHash<QString, int> begun_;      // by file: the last row of it that has been begun
    std::vector<int> begun_before_;  // by row: the one of the same file before that, or -1
};

}  // namespace forms
