// The program. It takes no arguments; the environment may name two things:
//   WEBSMIDE_SETTINGS_DIR  folder of the settings, in place of the user's own (~/.config/websmide)
//   WEBSMIDE_COLOURS       "light" or "dark", in place of the desktop's colours

#include "app/shared/swedish_texts.h"
#include "app/shared/unhandled_error.h"
#include "forms/main/main_form.h"
#include "settings/settings_store.h"
#include "toolkit/theme.h"

int main(int argc, char** argv) {
    app::Application application(argc, argv);
    application.setApplicationName(QStringLiteral("websmide-ftp"));
    application.setDesktopFileName(QStringLiteral("websmide-ftp"));
    application.installTranslator(new app::SwedishTexts(&application));
    toolkit::ApplyTheme(application);

    settings::Store store(qEnvironmentVariable("WEBSMIDE_SETTINGS_DIR"));
    forms::MainForm window(store);
    window.show();
    window.GreetNewUser();
    return application.exec();
}
