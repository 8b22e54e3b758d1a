// Who hears the windows knows every control by a name of its own.

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QSet>

#include "tests/accessibility/windows.h"

namespace forms {
namespace {

class Names : public Windows {};
INSTANTIATE_TEST_SUITE_P(Windows, Names, EveryWindow(), NameOfWindow);

// Both panels of the main window have a button "Uppdatera": they are told apart by the panel's name.
const QWidget* GroupOf(const QWidget& control) {
    const QWidget* group = control.parentWidget();
    while (!group->isWindow() && group->accessibleName().isEmpty()) group = group->parentWidget();
    return group;
}

bool IsPartOfControl(const QWidget& widget) {
    return qobject_cast<QComboBox*>(widget.parentWidget()) || qobject_cast<QLineEdit*>(widget.parentWidget());
}

TEST_P(Names, EveryControlHasOne) {
    Visit([](QWidget& window) {
        EXPECT_FALSE(AccessibleText(window, QAccessible::Name).isEmpty());
        for (const QWidget* control : ControlsOf(window)) {
            const QString name = AccessibleText(*control, QAccessible::Name);
            EXPECT_FALSE(name.trimmed().isEmpty()) << Describe(*control);
            EXPECT_NE(name, control->objectName()) << Describe(*control);
            EXPECT_FALSE(name.contains(u'&')) << Describe(*control);
        }
    });
}

TEST_P(Names, NoTwoOfAGroupAreCalledTheSame) {
    Visit([](QWidget& window) {
        QSet<QPair<const QWidget*, QString>> known;
        for (const QWidget* control : ControlsOf(window)) {
            if (IsPartOfControl(*control)) continue;
            const std::pair key(GroupOf(*control), AccessibleText(*control, QAccessible::Name));
            EXPECT_FALSE(known.contains(key)) << Describe(*control);
            known.insert(key);
        }
    });
}

TEST_P(Names, NothingIsToldInMarkup) {
    Visit([](QWidget& window) {
        for (const QWidget* widget : window.findChildren<QWidget*>())
            for (const auto kind : {QAccessible::Name, QAccessible::Description})
                EXPECT_FALSE(AccessibleText(*widget, kind).contains(u'<')) << Describe(*widget);
    });
}

TEST_P(Names, APictureHasOneOrIsPassedOver) {
    Visit([](QWidget& window) {
        for (QLabel* label : window.findChildren<QLabel*>()) {
            if (label->pixmap().isNull() || !label->isVisible()) continue;
            const QAccessibleInterface* part = QAccessible::queryAccessibleInterface(label);
            EXPECT_TRUE(part->role() == QAccessible::Whitespace || !part->text(QAccessible::Name).isEmpty())
                << Describe(*label);
        }
    });
}

// The label that stands beside a field leads to it.
TEST_P(Names, NoLabelWithAColonStandsAlone) {
    Visit([](QWidget& window) {
        for (const QLabel* label : window.findChildren<QLabel*>()) {
            const QString text = label->text().trimmed();
            const bool names_a_field = text.endsWith(u':') && text.size() > 1;
            if (!names_a_field || text == QStringLiteral("INFO:")) continue;
            EXPECT_TRUE(label->buddy()) << Describe(*label);
        }
    });
}

struct NameCase {
    const char* control;
    const char* name;
};

class MainNames : public MainWindow, public ::testing::WithParamInterface<NameCase> {};

TEST_P(MainNames, IsWhatTheUserReads) {
    Open();
    EXPECT_EQ(AccessibleText(Get(GetParam().control), QAccessible::Name), QString::fromUtf8(GetParam().name));
}

INSTANTIATE_TEST_SUITE_P(
    Window, MainNames,
    ::testing::Values(NameCase{"Frame1", "Din dator"}, NameCase{"Frame2", "Server"},
                      NameCase{"Drive1", "Enhet"}, NameCase{"Text1", "Filmönster"},
                      NameCase{"lk", "Ihågkomna kataloger"}, NameCase{"Command22", "Ändra"},
                      NameCase{"Command29", "Välj favoritkatalog"},
                      NameCase{"Dir1", "Kataloger på din dator"}, NameCase{"list2", "Filer på din dator"},
                      NameCase{"listdir2", "Filer på servern"}, NameCase{"Command1", "Ladda upp fil(er)"},
                      NameCase{"p1", "Överförd andel"}, NameCase{"label7", "0"}, NameCase{"avb", "Avbryt"},
                      NameCase{"lblState", "Ej ansluten"}, NameCase{"listTrace", "Händelser"}),
    [](const auto& window) { return std::string(window.param.control); });

}  // namespace
}  // namespace forms
