#include "forms/main/elided_label.h"

#include <gtest/gtest.h>

#include "toolkit/wrapped_label.h"

namespace forms {
namespace {

TEST(ElidedLabel, TakesAServersWordsForWhatTheyAre) {
    ElidedLabel label;
    label.Show(QStringLiteral("550 x"));
    const int height = label.sizeHint().height();
    const QString words = QStringLiteral("550 <h1>x</h1><img src='file:///dev/zero'>");
    label.Show(words);
    EXPECT_EQ(label.textFormat(), Qt::PlainText);
    EXPECT_EQ(label.sizeHint().height(), height);
    EXPECT_EQ(label.text(), words);
    EXPECT_EQ(label.toolTip(), toolkit::PlainToolTip(words));
}

TEST(ElidedLabel, HasANoteBelowTheWholeText) {
    ElidedLabel label;
    label.Show(QStringLiteral("Ansluten"), QStringLiteral("Krypterad"));
    EXPECT_EQ(label.text(), QStringLiteral("Ansluten"));
    EXPECT_EQ(label.toolTip(), toolkit::PlainToolTip(QStringLiteral("Ansluten\nKrypterad")));
    EXPECT_EQ(label.accessibleDescription(), QStringLiteral("Krypterad"));
    label.Show(QStringLiteral("Ej ansluten"));
    EXPECT_EQ(label.toolTip(), toolkit::PlainToolTip(QStringLiteral("Ej ansluten")));
    EXPECT_EQ(label.accessibleDescription(), QString());
}

}  // namespace
}  // namespace forms
