#include "app/shared/unhandled_error.h"

#include <exception>

#include "toolkit/message_box.h"

namespace app {
namespace {

QString TextOfCurrentError() {
    try {
        throw;
    } catch (const std::exception& error) {
        return QString::fromUtf8(error.what());
    } catch (...) {
        return QStringLiteral("Okänt fel.");
    }
}

}  // namespace

bool Application::notify(QObject* receiver, QEvent* event) {
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        ReportUnhandledError();
        return false;
    }
}

void ReportUnhandledError() {
    toolkit::MsgBox(QApplication::activeWindow(), TextOfCurrentError(), toolkit::Buttons::Ok,
                    toolkit::Icon::None);
}

}  // namespace app
