#pragma once
// Names that come from a server and are to become local names.

#include <string_view>

namespace ftp {

/// Whether a file of this name would lie in the chosen folder and come back as that very name, on whichever
/// volume the folder lies. `name` is UTF-8. Refused for local use are
///
///   - the empty name, ".", "..", and names over 255 bytes
///   - '/', '\\', NUL and the other control characters
///   - a drive: a letter and a colon in front ("c:", "C:evil", "a:b"); elsewhere a colon is nothing special
///   - a dot or a blank at the end, which FAT and Windows leave out: "a." would replace "a" there
///   - U+F05C and U+F080..U+F0FF, which stand for single bytes in the drive-letter notation
///
/// Names that only other systems reserve ("con", "a?b") are plain; the disk refuses them where it must.
bool IsPlainName(std::string_view name);

}  // namespace ftp
