// Asio compiled once, here, instead of in every file that includes it.
#include <asio/impl/src.hpp>
