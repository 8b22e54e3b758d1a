#pragma once
// Answers message boxes and input boxes in tests, and fails the test for a box that it did not expect.

#include <QDialog>
#include <QObject>
#include <functional>
#include <optional>

namespace toolkit_test {

/// Expects one box and answers it by mouse and keys. Several are answered in the order in which they were
/// made.
///
///     ExpectBox box("Ta bort fil", "Vill du ta bort [C:\\a.txt] ?", "cmdNo");
///     ...what opens the box...
///
/// Other words than expected fail the test, and so does, when this is destroyed, a box that has not come.
class ExpectBox {
 public:
    /// `press` is the objectName of the button to click, or one of the keys below. `typed` replaces what
    /// stands in the field of an input box.
    ExpectBox(const QString& title, const QString& text, const QString& press,
              const std::optional<QString>& typed = std::nullopt);
    ~ExpectBox();
    ExpectBox(const ExpectBox&) = delete;
    ExpectBox& operator=(const ExpectBox&) = delete;

    inline static const QString kEnter = QStringLiteral("Enter");
    inline static const QString kEscape = QStringLiteral("Escape");
    inline static const QString kNothing;  // something else ends the box

    /// What to do while the box is open, before the answer. It may end the box.
    ExpectBox& Meanwhile(std::function<void(QDialog& box)> act);

    bool HasCome() const { return has_come_; }

 private:
    friend class BoxWatcher;
    void Answer(QDialog& box);
    void Press(QDialog& box) const;

    const QString title_, text_, press_;
    const std::optional<QString> typed_;
    std::function<void(QDialog&)> meanwhile_;
    bool has_come_ = false;
};

/// Sees every box that is shown. display_main has one for the whole run.
class BoxWatcher : public QObject {
 public:
    BoxWatcher();
    bool eventFilter(QObject* watched, QEvent* event) override;

 private:
    static void Handle(QDialog& box);
};

}  // namespace toolkit_test
