#include <QDrag>
#include <QMimeData>
#include <QUrl>

#include "tests/forms/session/session.h"
#include "tools/demo/input.h"

using toolkit_test::ExpectBox;

namespace forms {
namespace {

// Drags with the X server's own pointer, from list to list.
class Drops : public Session {
 protected:
    void SetUp() override {
        Session::SetUp();
        for (const char* name : {"a.txt", "b.txt"}) WriteLocalFile(name, name);
        for (const char* name : {"x.txt", "y.txt"}) server_.AddFile(name, name);
        Open();
        Connect(server_.HostField());
    }

    QPoint OnScreen(const char* list, int row) {
        auto& view = Get<QAbstractItemView>(list);
        const QModelIndex index = view.model()->index(row, 0);
        view.scrollTo(index);
        return view.viewport()->mapToGlobal(view.visualRect(index).center());
    }
    QPoint Beside(const char* list) {
        auto& viewport = *Get<QAbstractItemView>(list).viewport();
        return viewport.mapToGlobal(QPoint(viewport.width() / 2, viewport.height() - 5));
    }

    /// From a row of the list to a place; returns when `done` says so, or gives up. Each step of the hand
    /// waits for what the one before has led to, in whatever event loop then runs.
    bool Drag(const char* list, int row, QPoint to, const std::function<bool()>& done) {
        const QPoint from = OnScreen(list, row);
        auto& view = Get<QAbstractItemView>(list);
        input_.Move(from);
        input_.PressButton();
        int moves = 0;
        const auto dragging = [&] { return view.findChild<QDrag*>() != nullptr; };
        QTimer hand;
        QObject::connect(&hand, &QTimer::timeout, [&] {
            if (moves == 0 && !dragging()) return Nudge(from);
            if (++moves < 5) return input_.Move(to + QPoint(moves, 0));
            hand.stop();
            input_.ReleaseButton();
        });
        hand.start(10);
        const bool came = QTest::qWaitFor(done, 10'000);
        if (hand.isActive()) input_.ReleaseButton();
        return came;
    }

    /// To and fro beside the place, far enough to begin a drag.
    void Nudge(QPoint place) {
        nudge_ = nudge_ == 20 ? 40 : 20;
        input_.Move(place + QPoint(nudge_, 0));
    }

    int ServerFiles() const {
        int count = 0;
        for (const char* name : {"a.txt", "b.txt"}) count += server_.File(name).has_value();
        return count;
    }

    /// What a file manager drops on the list.
    void DropUrls(const char* list, const QList<QUrl>& urls) {
        QMimeData data;
        data.setUrls(urls);
        QWidget& viewport = *Get<QAbstractItemView>(list).viewport();
        const QPoint place = viewport.rect().center();
        QDragEnterEvent enter(place, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&viewport, &enter);
        accepted_ = enter.isAccepted();
        if (!accepted_) return;
        QDropEvent drop(place, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&viewport, &drop);
        EXPECT_EQ(drop.dropAction(), Qt::CopyAction) << "nobody may remove what was only copied";
    }

    demo::Input input_;
    ftp_test::ScriptedServer server_;
    bool accepted_ = false;
    int nudge_ = 0;
};

TEST_F(Drops, ALocalFileGoesUp) {
    EXPECT_TRUE(Drag("list2", 1, Beside("listdir2"), [this] { return ServerFiles() == 1; }));
    EXPECT_EQ(server_.File("b.txt"), "b.txt");
    EXPECT_TRUE(QTest::qWaitFor([this] { return Button("Command9").isEnabled(); }));
    EXPECT_GE(ServerRowOf("b.txt"), 0);
    EXPECT_TRUE(QFile::exists(files_.filePath("b.txt")));
}

TEST_F(Drops, SeveralLocalFilesGoUp) {
    ClickLocal("a.txt");
    ClickLocal("b.txt", Qt::ControlModifier);
    EXPECT_TRUE(Drag("list2", 1, Beside("listdir2"), [this] { return ServerFiles() == 2; }));
}

TEST_F(Drops, AServerFileComesDown) {
    ExpectBox name("Ladda hem fil från Server", "Spara y.txt(?)som", "cmdOk");
    EXPECT_TRUE(Drag("listdir2", ServerRowOf("y.txt"), Beside("list2"),
                     [this] { return QFile::exists(files_.filePath("y.txt")); }));
    EXPECT_TRUE(QTest::qWaitFor([this] { return Names().contains("y.txt"); }));
}

TEST_F(Drops, SeveralServerFilesComeDown) {
    ClickServer("x.txt");
    ClickServer("y.txt", Qt::ControlModifier);
    EXPECT_TRUE(Drag("listdir2", ServerRowOf("x.txt"), Beside("list2"),
                     [this] { return QFile::exists(files_.filePath("y.txt")); }));
    EXPECT_EQ(LocalFile("x.txt"), "x.txt");
}

TEST_F(Drops, ARowDroppedOnItsOwnListDoesNothing) {
    const auto before = server_.Commands();
    bool ended = false;
    QObject::connect(&Get<toolkit::ListView>("list2"), &toolkit::ListView::DragEnded, [&] { ended = true; });
    EXPECT_TRUE(Drag("list2", 0, Beside("list2"), [&] { return ended; }));
    EXPECT_EQ(server_.Commands(), before);
    EXPECT_EQ(LocalNames(), QStringList({"a.txt", "b.txt"}));
}

TEST_F(Drops, FilesFromElsewhereGoUpUnderTheirNamesInLowerCase) {
    QTemporaryDir elsewhere;
    const QByteArray names[] = {"Sida #1.HTM", "\303\205ret.txt"};
    QList<QUrl> urls;
    for (const QByteArray& name : names) {
        QFile file(elsewhere.filePath(QFile::decodeName(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(name) == name.size());
        urls.append(QUrl::fromLocalFile(file.fileName()));
    }
    DropUrls("listdir2", urls);
    EXPECT_TRUE(QTest::qWaitFor([this] { return server_.File("\303\245ret.txt").has_value(); }));
    EXPECT_EQ(server_.File("sida #1.htm"), names[0].toStdString());
    EXPECT_TRUE(QTest::qWaitFor([this] { return Button("Command9").isEnabled(); }));
    auto& remembered = Get<QComboBox>("lk");
    EXPECT_EQ(remembered.itemText(remembered.count() - 1),
              platform::FromNative(QFile::encodeName(elsewhere.path())));
    EXPECT_EQ(Get<toolkit::DirListBox>("Dir1").Path(), Folder()) << "the panel stays where it is";
}

TEST_F(Drops, WhatIsNoFileIsToldOfAndTheOthersGo) {
    DropUrls("listdir2", {QUrl::fromLocalFile(files_.path()), QUrl("https://example.org/a.txt"),
                          QUrl::fromLocalFile(files_.filePath("b.txt"))});
    EXPECT_TRUE(QTest::qWaitFor([this] { return server_.File("b.txt").has_value(); }));
    EXPECT_EQ(TraceLines().filter("Fel nummer:").size(), 2);
}

TEST_F(Drops, AnOperationKeepsDropsAway) {
    server_.At("LIST", {ftp_test::Hold(), ftp_test::Proper()});
    bool seen = false;
    When([this] { return server_.Commands().back().starts_with("LIST") && ServerLines().ListCount() == 0; },
         [&] {
             seen = true;
             DropUrls("listdir2", {QUrl::fromLocalFile(files_.filePath("b.txt"))});
             EXPECT_FALSE(accepted_);
             server_.Release();
         });
    ClickOn("Command9");
    EXPECT_TRUE(seen);
    EXPECT_EQ(ServerFiles(), 0);
}

TEST_F(Drops, NothingIsTakenWhereItCannotGo) {
    const QList<QUrl> urls{QUrl::fromLocalFile(files_.filePath("b.txt"))};
    DropUrls("list2", urls);
    EXPECT_FALSE(accepted_);
    ClickOn("Command16");
    DropUrls("listdir2", urls);
    EXPECT_FALSE(accepted_) << "there is no connection";
}

}  // namespace
}  // namespace forms
