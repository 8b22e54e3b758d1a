// The real main window, measured from the inside with real mouse and key events.
//
//   window server HOST:PORT    milliseconds from the click on "&Uppdatera" to painted rows, and the longest
//   stall of the
//                              UI thread meanwhile; demo/demo's home folder holds the files
//   window local FOLDER        milliseconds from opening the folder to painted rows, and from Ctrl+A to the
//   title

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <cstdio>
#include <functional>

#include "app/shared/unhandled_error.h"
#include "forms/main/main_form.h"
#include "platform/drive_path.h"
#include "settings/profiles.h"
#include "toolkit/file_controls.h"
#include "toolkit/theme.h"

namespace {

template <class T>
T* Find(const QString& form, const QString& name) {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->objectName() != form || !window->isVisible()) continue;
        if (auto* found = window->findChild<T*>(name)) return found;
    }
    return nullptr;
}

void Until(const std::function<bool()>& done) {
    while (!done())
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 20);
}

void Click(QWidget* button) {
    QTest::mouseClick(button, Qt::LeftButton);
}

/// How long the event loop was kept from its next turn, at most.
class Stalls : public QObject {
 public:
    Stalls() {
        auto* loop = QAbstractEventDispatcher::instance();
        connect(loop, &QAbstractEventDispatcher::awake, this, [this] { EndTurn(), turn_.start(); });
        connect(loop, &QAbstractEventDispatcher::aboutToBlock, this, [this] { EndTurn(); });
    }
    qint64 LongestMilliseconds() const { return longest_ / 1'000'000; }

 private:
    void EndTurn() {
        if (turn_.isValid()) longest_ = std::max(longest_, turn_.nsecsElapsed());
        turn_.invalidate();
    }
    QElapsedTimer turn_;
    qint64 longest_ = 0;
};

/// Whether a list has been painted with rows since it was made.
class Painted : public QObject {
 public:
    explicit Painted(QAbstractItemView* list) : list_(list) { list->viewport()->installEventFilter(this); }
    bool WithRows() const { return with_rows_; }
    void Forget() { with_rows_ = false; }

 protected:
    bool eventFilter(QObject* viewport, QEvent* event) override {
        if (event->type() != QEvent::Paint) return false;
        viewport->removeEventFilter(this);
        QCoreApplication::sendEvent(viewport, event);
        viewport->installEventFilter(this);
        with_rows_ = with_rows_ || list_->model()->rowCount() > 0;
        return true;
    }

 private:
    QAbstractItemView* list_;
    bool with_rows_ = false;
};

void MeasureServer() {
    Click(Find<QPushButton>("MainForm", "cmdConnection"));
    Until([] { return Find<QPushButton>("frmConnection", "cmdConnect") != nullptr; });
    Click(Find<QPushButton>("frmConnection", "cmdConnect"));
    auto* refresh = Find<QPushButton>("MainForm", "Command9");
    auto* list = Find<QAbstractItemView>("MainForm", "listdir2");
    Until([=] { return refresh->isEnabled() && list->model()->rowCount() > 0; });

    Painted painted(list);
    Stalls stalls;
    QElapsedTimer clock;
    clock.start();
    Click(refresh);
    painted.Forget();  // what was painted meanwhile were the rows on their way out
    list->viewport()->update();
    Until([&] { return painted.WithRows(); });
    std::printf("rows %d\npainted_ms %lld\nstall_ms %lld\n", list->model()->rowCount(), clock.elapsed(),
                stalls.LongestMilliseconds());
}

void MeasureLocal(const QString& folder) {
    auto* folders = Find<toolkit::DirListBox>("MainForm", "Dir1");
    auto* list = Find<QAbstractItemView>("MainForm", "list2");
    QWidget* window = list->window();
    Painted painted(list);
    QElapsedTimer clock;
    clock.start();
    folders->SetPath(platform::FromNative(folder.toUtf8()));
    Until([&] { return painted.WithRows(); });
    std::printf("rows %d\npainted_ms %lld\n", list->model()->rowCount(), clock.elapsed());

    list->setFocus();
    const QString before = window->windowTitle();
    clock.start();
    QTest::keyClick(list, Qt::Key_A, Qt::ControlModifier);
    Until([&] { return window->windowTitle() != before; });
    std::printf("title_ms %lld\n", clock.elapsed());
}

}  // namespace

int main(int count, char** arguments) {
    app::Application application(count, arguments);
    toolkit::ApplyTheme(application);
    const QStringList words = application.arguments();
    if (words.size() < 3) return 2;
    const QTemporaryDir settings_folder;
    settings::Store store(settings_folder.path());
    settings::SaveNewProfile(store, "bench", {words[2], "demo", "demo", ""});
    forms::MainForm window(store);
    window.show();
    if (!QTest::qWaitForWindowExposed(&window)) return 1;
    words[1] == "server" ? MeasureServer() : MeasureLocal(words[2]);
    std::fflush(stdout);
    return 0;
}
