#pragma once
// What the system can do with a TCP socket and Asio cannot: all that the network part needs of the system
// besides Asio and the look-up of names. Sockets do not block. Nothing here waits.

#include <asio/error.hpp>
#include <asio/ip/tcp.hpp>
#include <cstddef>

namespace ftp {

/// The SYN leaves here and now, not when somebody waits for the answer. The socket can be written to when the
/// attempt is over; OutcomeOfConnecting then tells how it went.
asio::error_code StartConnecting(asio::ip::tcp::socket& socket, const asio::ip::tcp::endpoint& to);
asio::error_code OutcomeOfConnecting(asio::ip::tcp::socket& socket);

/// So many bytes may wait in the kernel without being on their way; best effort.
void LimitUnsent(asio::ip::tcp::socket& socket, int bytes);
/// What has arrived so far is acknowledged without delay; best effort, and to be asked for after each read.
void AcknowledgeNow(asio::ip::tcp::socket& socket);
/// Bytes that have been written and that the peer has not acknowledged; 0 where that cannot be told.
std::size_t Unacknowledged(asio::ip::tcp::socket& socket);

/// Sends the next bytes of a file (SourceFile::Handle), as many as there is room for and `limit` at most; 0
/// without an error at the file's end. would_block: not now. operation_not_supported: not from this file,
/// which has to be read instead. std::errc::io_error: the file cannot be read.
std::size_t SendFromFile(asio::ip::tcp::socket& socket, int file, std::size_t limit, asio::error_code& error);
/// The same of the number that the system's call has left in errno.
asio::error_code FailureOfSending(int number);

}  // namespace ftp
