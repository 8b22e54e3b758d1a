#include "app/shared/swedish_texts.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QLineEdit>
#include <QMenu>
#include <memory>

namespace {

TEST(SwedishTexts, AreThoseOfATextFieldsMenu) {
    QLineEdit field;
    const std::unique_ptr<QMenu> menu(field.createStandardContextMenu());
    QStringList texts;
    for (const QAction* action : menu->actions())
        if (!action->isSeparator()) texts.append(action->text().section(QLatin1Char('\t'), 0, 0));
    EXPECT_EQ(texts.join(QLatin1Char('|')),
              QStringLiteral("&Ångra|&Gör om|Klipp &ut|&Kopiera|Kl&istra in|Ta bort|Markera allt"));
}

TEST(SwedishTexts, LeaveOtherPlacesAlone) {
    EXPECT_EQ(QCoreApplication::translate("MainForm", "Directory"), QStringLiteral("Directory"));
    EXPECT_EQ(QCoreApplication::translate("MainForm", "Delete"), QStringLiteral("Delete"));
}

}  // namespace
