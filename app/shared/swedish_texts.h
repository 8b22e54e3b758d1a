#pragma once
// The few texts that Qt itself shows, in Swedish.

#include <QTranslator>

namespace app {

/// The context menus of text fields. Install it on the application.
class SwedishTexts : public QTranslator {
    Q_OBJECT
 public:
    using QTranslator::QTranslator;

    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char* disambiguation,
                      int n) const override;
};

}  // namespace app
