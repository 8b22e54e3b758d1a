#pragma once
// Text from outside as it can be shown: with nothing in it that hides, breaks the line or turns it around.

#include <QString>
#include <string_view>

namespace ftp {

/// `text` with a mark in place of each character that does not show: C0 controls (TAB too) and DEL as their
/// pictures U+2400..U+2421; C1 controls, line and paragraph separators, direction marks, joiners, fillers,
/// variation selectors, tags, other format characters, lone surrogates and every blank but the common one as
/// "‹U+202E›".
///
/// Two texts never become one: what looks like a mark already, a picture or the first character of "‹U+" and
/// of a byte's mark ("‹F6›", which stands in names that cannot be told apart otherwise), is marked itself
/// ("‹U+2409›", "‹U+2039›"). So it is not to be applied twice: the second time would mark the
/// marks. Letters that only look alike stay as they are.
///
/// Text without such characters is returned as it is, without a copy. A mark holds no blank. Any thread.
QString VisibleText(const QString& text);

/// Bytes that are to be told from every text: those beyond ASCII as "‹F6›", the others as VisibleText shows
/// them. What this makes of different bytes differs, and where one of them is beyond ASCII it is nothing that
/// VisibleText makes. Any thread.
QString VisibleBytes(std::string_view bytes);

}  // namespace ftp
