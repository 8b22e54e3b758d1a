// Plays a script in the program that has loaded this plugin, as a person would: with the mouse and the
// keyboard. Each step is told on the standard output and leaves a picture: of the screen, numbered, or of
// what the step frames, under its own name. A step that fails ends the process at once with code 1; so does a
// program that ends before its time.
//
// The plugin's parameter (QT_QPA_GENERIC_PLUGINS=demo_player:SCRIPT) names the script: "session" or
// "screens". WEBSMIDE_DEMO names the folder of the pictures; for the session, "server" in it is the account's
// home and "local" the program's current folder.

#include <QApplication>
#include <QElapsedTimer>
#include <QGenericPlugin>
#include <QImage>
#include <QTimer>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "tools/demo/pictures.h"
#include "tools/demo/screens.h"
#include "tools/demo/session.h"

namespace demo {
namespace {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

constexpr auto kInterval = 40ms;
constexpr auto kDeadline = 30s;  // of a step; a loaded machine is slow, and a person patient

// A timer of the program's own event loop: it goes on in every nested loop too.
class Player : public QObject {
 public:
    explicit Player(const QString& script) : folder_(qEnvironmentVariable("WEBSMIDE_DEMO")) {
        QApplication::setCursorFlashTime(0);  // a picture does not depend on its moment
        steps_ = script == u"screens"_s ? Screens(input_)
                                        : Session(input_, QDir(folder_.filePath(u"server"_s)),
                                                  QDir(folder_.filePath(u"local"_s)));
        connect(&timer_, &QTimer::timeout, this, &Player::Play);
        connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, &Player::End);
        timer_.start(kInterval);
    }

 private:
    void Play() {
        const Step& step = steps_[current_];
        try {
            if (!started_.isValid()) {
                started_.start();
                step.act();
            } else if (step.until() && HasSettled()) {
                Finish();
            } else if (started_.hasExpired(kDeadline / 1ms)) {
                throw std::runtime_error("it takes too long");
            }
        } catch (const std::exception& error) {
            Fail(error.what());
        }
    }

    // What the step has changed is painted when two pictures in a row are the same.
    bool HasSettled() {
        const QImage before = std::exchange(picture_, Screen());
        return picture_ == before;
    }

    void Finish() {
        const Step& step = steps_[current_];
        if (step.frame) picture_ = Framed(picture_, step.frame(), step.marks);
        Tell(false);
        started_.invalidate();
        if (++current_ == steps_.size()) timer_.stop();
    }

    // The last step closes the last window, and with it the program: the time for a second picture is not
    // given.
    void End() {
        if (current_ == steps_.size()) return;
        picture_ = Screen();
        if (current_ + 1 < steps_.size() || !steps_[current_].until()) Fail("the program has ended");
        Finish();
    }

    void Tell(bool failed) {
        const QString name = steps_[current_].name;
        QString file = QString(name).replace(u' ', u'-') + u".png"_s;
        if (!steps_[current_].frame || failed)
            file = u"%1-%2"_s.arg(current_ + 1, 2, 10, QLatin1Char('0')).arg(file);
        picture_.save(folder_.filePath(file));
        std::printf("%2zu/%zu  %-30s %-6s %s\n", current_ + 1, steps_.size(), qPrintable(name),
                    failed ? "FAILED" : "done", qPrintable(file));
        std::fflush(stdout);
    }

    [[noreturn]] void Fail(const char* reason) {
        picture_ = Screen();
        Tell(true);
        std::fprintf(stderr, "%s\n", reason);
        std::_Exit(EXIT_FAILURE);
    }

    const QDir folder_;
    Input input_;
    std::vector<Step> steps_;
    std::size_t current_ = 0;
    QElapsedTimer started_;  // valid while a step is being played
    QImage picture_;
    QTimer timer_;
};

}  // namespace

class PlayerPlugin : public QGenericPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "player.json")
 public:
    QObject* create(const QString&, const QString& script) override { return new Player(script); }
};

}  // namespace demo

#include "player.moc"
