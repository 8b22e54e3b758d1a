#pragma once
// What the tests of the list controls share: real clicks and keys, and a note of what was raised.

#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QTest>
#include <utility>

namespace toolkit {

constexpr int kManyRows = 100'000;
#ifdef __SANITIZE_ADDRESS__
constexpr int kMillisecondsForManyRows = 8000;
#else
constexpr int kMillisecondsForManyRows = 2000;
#endif

inline QStringList Lines(int count) {
    QStringList lines;
    lines.reserve(count);
    for (int i = 0; i < count; ++i) lines.append(QStringLiteral("line %1").arg(i));
    return lines;
}

template <class View>
class ListTest : public testing::Test {
 protected:
    void Show() {
        view_.resize(240, 200);
        view_.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&view_));
        view_.setFocus();
        ASSERT_TRUE(QTest::qWaitFor([this] { return view_.hasFocus(); }));
    }

    QPoint Middle(int row) {
        const QModelIndex index = view_.model()->index(row, 0);
        view_.scrollTo(index);
        return {20, view_.visualRect(index).center().y()};
    }

    void ClickRow(int row, Qt::KeyboardModifiers keys = {}, Qt::MouseButton button = Qt::LeftButton) {
        QTest::mouseClick(view_.viewport(), button, keys, Middle(row));
    }

    // Down, up, down as the double click, up.
    void DoubleClickRow(int row, Qt::MouseButton button = Qt::LeftButton) {
        ClickRow(row, {}, button);
        QTest::mouseDClick(view_.viewport(), button, {}, Middle(row));
        QTest::mouseRelease(view_.viewport(), button, {}, Middle(row));
    }

    void ClickBesideRows() {
        QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, {20, view_.viewport()->height() - 3});
    }

    void Key(Qt::Key key, Qt::KeyboardModifiers keys = {}) { QTest::keyClick(&view_, key, keys); }

    // Of a handler: "Click" with the rows selected then, as "Click[0,2]".
    void Note(const QString& event) {
        QStringList rows;
        for (int row : view_.SelectedRows()) rows.append(QString::number(row));
        raised_.append(event + u'[' + rows.join(u',') + u']');
    }

    QString Raised() { return std::exchange(raised_, {}).join(u' '); }

    View view_;
    QStringList raised_;
};

}  // namespace toolkit
