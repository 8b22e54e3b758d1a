#pragma once
// Failures of the engine as the error event shows them.

#include <QString>
#include <cstdint>

#include "ftp/engine/wire/failure.h"

namespace ftp {

struct ErrorEvent {
    std::int32_t number;  // reply code, classic sockets number or classic run-time number
    QString text;         // Swedish, with the server's own words where it sent some
};

/// `words` is Failure::detail as text, or the local path; what does not show in it is marked (VisibleText).
ErrorEvent DescribeFailure(const Failure& failure, const QString& words);

}  // namespace ftp
