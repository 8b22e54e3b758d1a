#include "forms/transfer/queue_model.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QPalette>

namespace forms {
namespace {

QueueModel& Filled(QueueModel& model) {
    model.SetEntries({"-rw 3 a.txt", "-rw 4 b [1].txt", "-rw 5 c: d.txt", "-rw 6 e.txt"},
                     {"a.txt", "b [1].txt", "c: d.txt", "e.txt"});
    for (int row = 0; row < 3; ++row) model.SetState(row, EntryState::Done);
    return model;
}

TEST(QueueModel, NamesEachStateBesideTheText) {
    QueueModel model;
    Filled(model);
    const std::pair<EntryState, const char*> states[] = {{EntryState::Waiting, "väntar"},
                                                         {EntryState::Running, "pågår"},
                                                         {EntryState::Done, "klar"},
                                                         {EntryState::Failed, "misslyckades"}};
    const QModelIndex index = model.index(0, 0);
    QSet<qint64> pictures;
    for (const auto& [state, name] : states) {
        model.SetState(0, state);
        EXPECT_EQ(index.data().toString(), "-rw 3 a.txt");
        EXPECT_EQ(index.data(Qt::AccessibleDescriptionRole).toString(), name);
        EXPECT_EQ(index.data(Qt::AccessibleTextRole).toString(), QString("-rw 3 a.txt, ") + name);
        const auto picture = index.data(Qt::DecorationRole).value<QIcon>();
        EXPECT_FALSE(picture.pixmap(16).isNull());
        pictures.insert(picture.cacheKey());
        const QVariant colour = index.data(Qt::ForegroundRole);
        EXPECT_EQ(colour.isValid(), state == EntryState::Done);
    }
    EXPECT_EQ(pictures.size(), 4);
}

TEST(QueueModel, CountsInWords) {
    QueueModel model;
    Filled(model);
    EXPECT_EQ(model.Tally(), "3 klara, 1 väntar");
    model.SetState(0, EntryState::Failed);
    model.SetState(1, EntryState::Failed);
    model.SetState(1, EntryState::Failed);
    model.SetState(3, EntryState::Running);
    EXPECT_EQ(model.Tally(), "1 klar, 2 misslyckades, 0 väntar");
    model.SetEntries({}, {});
    EXPECT_EQ(model.Tally(), "0 klara, 0 väntar");
}

TEST(QueueModel, TellsOfChangesOnly) {
    QueueModel model;
    QList<int> told;
    QObject::connect(&model, &QueueModel::StateChanged, [&](int row) { told.append(row); });
    Filled(model);
    model.SetState(2, EntryState::Done);
    model.SetState(-1, EntryState::Done);
    model.SetState(4, EntryState::Done);
    EXPECT_EQ(told, QList<int>({0, 1, 2}));
    model.SetEntries({}, {});
    model.SetState(0, EntryState::Failed);
    EXPECT_EQ(told.size(), 3);
    EXPECT_EQ(model.RowOfError("Nej. [a.txt]"), -1);
}

TEST(QueueModel, FindsTheFileThatAnErrorNames) {
    QueueModel model;
    Filled(model);
    const std::pair<const char*, int> table[] = {
        {"Servern vägrar: 550 No. [a.txt]", 0},
        {"Servern vägrar: 550 No [x] [b [1].txt]", 1},
        {"Filen finns inte: a.txt", 0},
        {"Filen finns inte: b [1].txt", 1},
        {"Åtkomst nekas: c: d.txt", 2},
        {"Servern vägrar: 550 No. [c: d.txt]", 2},
        {"Servern vägrar: 550 No. [e.txt]", -1},  // has not been begun
        {"Servern vägrar: 550 a.txt: No.", -1},
        {"Servern vägrar: 550 No.", -1},
        {"Servern vägrar: 550 No. [A.TXT]", -1},
        {"[a.txt]", -1},
        {"a.txt", -1},
        {" []", -1},
        {"", -1},
    };
    for (const auto& [text, row] : table) EXPECT_EQ(model.RowOfError(QString::fromUtf8(text)), row) << text;
    EXPECT_EQ(model.RowOfError(QString(": ").repeated(100'000)), -1);
}

TEST(QueueModel, OfFilesOfOneNameTheLastBegunHasFailed) {
    QueueModel model;
    model.SetEntries({"1", "2", "3", "4"}, {"a.txt", "a.txt", "b.txt", "a.txt"});
    const auto row = [&] { return model.RowOfError("Servern vägrar: 550 No. [a.txt]"); };
    EXPECT_EQ(row(), -1);
    for (const int begun : {0, 1, 2}) model.SetState(begun, EntryState::Running);
    EXPECT_EQ(row(), 1);
    model.SetState(1, EntryState::Failed);
    EXPECT_EQ(row(), 0);
    model.SetState(0, EntryState::Done);
    EXPECT_EQ(row(), 0);
    model.SetState(0, EntryState::Failed);
    EXPECT_EQ(row(), 1);  // it has failed already
    model.SetState(3, EntryState::Running);
    EXPECT_EQ(row(), 3);
}

}  // namespace
}  // namespace forms
