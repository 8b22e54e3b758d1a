#pragma once
// What a settings file looks like.

#include <QByteArray>

namespace settings {

/// A whole file of these lines.
inline QByteArray WholeFile(const QByteArray& lines) {
    return "# websmide 2\n" + lines + "# end\n";
}

}  // namespace settings
