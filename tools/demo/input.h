#pragma once
// The mouse and the keyboard of the X server that shows the program. UI thread only.
//
// Events come from the X server itself (XTEST): they take a person's way, through the window manager, to
// whatever lies under the pointer and whatever has the focus. Calls return at once; what comes of them comes
// later. Between events of the mouse and of the keyboard there is no order: the window manager may hold the
// mouse's back, and a key that is to be down for a click is let go when the click has shown its effect.

#include <QPoint>
#include <cstdint>
#include <initializer_list>
#include <memory>

struct xcb_connection_t;

namespace demo {

/// X key symbols.
enum class Key : std::uint32_t {
    Zero = 0x30,
    K = 0x6b,
    Tab = 0xff09,
    Escape = 0xff1b,
    Control = 0xffe3,
    Alt = 0xffe9,
    F4 = 0xffc1
};

class Input {
 public:
    /// Connects to $DISPLAY; fatal where that cannot be done.
    Input();

    /// `place` is in pixels of the screen.
    void Click(QPoint place, int times = 1);
    void RightClick(QPoint place);
    /// The left button, and the pointer; a drag is a press, some moves and a release.
    void PressButton();
    void ReleaseButton();
    void Move(QPoint place);

    void Press(Key key);
    void Release(Key key);
    void Type(std::initializer_list<Key> keys);  // one after the other
    /// Alt+F4, the window manager's key for it.
    void CloseWindow();

 private:
    void Send(std::uint8_t type, std::uint8_t detail, QPoint place = {});
    std::uint8_t CodeOf(Key key) const;

    const std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> connection_;
};

}  // namespace demo
