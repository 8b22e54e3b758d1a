#pragma once
// The engine's coroutine type.

#include <asio/any_io_executor.hpp>
#include <asio/awaitable.hpp>

#include "ftp/engine/wire/failure.h"

namespace ftp {

/// A lazily started coroutine on the worker's thread; it fails by its value, not by throwing.
template <class T = void>
using Task = asio::awaitable<Result<T>>;

}  // namespace ftp
