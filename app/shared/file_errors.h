#pragma once
// What to say of a local file operation that failed.

#include <QString>

#include "platform/file_result.h"

namespace app {

/// "Åtkomst nekas: C:\a.txt"
QString FileErrorText(platform::FileResult result, const QString& path);

}  // namespace app
