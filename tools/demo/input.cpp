#include "tools/demo/input.h"

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <QtGlobal>
#include <algorithm>
#include <cstdlib>

namespace demo {
namespace {

constexpr std::uint8_t kLeftButton = 1;
constexpr std::uint8_t kRightButton = 3;

}  // namespace

Input::Input() : connection_(xcb_connect(nullptr, nullptr), &xcb_disconnect) {
    if (xcb_connection_has_error(connection_.get())) qFatal("no X server to play on");
}

void Input::Click(QPoint place, int times) {
    Move(place);
    for (int i = 0; i < times; ++i) {
        PressButton();
        ReleaseButton();
    }
}

void Input::RightClick(QPoint place) {
    Move(place);
    Send(XCB_BUTTON_PRESS, kRightButton);
    Send(XCB_BUTTON_RELEASE, kRightButton);
}

void Input::PressButton() {
    Send(XCB_BUTTON_PRESS, kLeftButton);
}

void Input::ReleaseButton() {
    Send(XCB_BUTTON_RELEASE, kLeftButton);
}

void Input::Move(QPoint place) {
    Send(XCB_MOTION_NOTIFY, false, place);
}

void Input::Press(Key key) {
    Send(XCB_KEY_PRESS, CodeOf(key));
}

void Input::Release(Key key) {
    Send(XCB_KEY_RELEASE, CodeOf(key));
}

void Input::Type(std::initializer_list<Key> keys) {
    for (const Key key : keys) {
        Press(key);
        Release(key);
    }
}

void Input::CloseWindow() {
    Press(Key::Alt);
    Type({Key::F4});
    Release(Key::Alt);
}

void Input::Send(std::uint8_t type, std::uint8_t detail, QPoint place) {
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data->root;
    xcb_test_fake_input(connection_.get(), type, detail, XCB_CURRENT_TIME, root,
                        static_cast<std::int16_t>(place.x()), static_cast<std::int16_t>(place.y()), 0);
    xcb_flush(connection_.get());
}

std::uint8_t Input::CodeOf(Key key) const {
    const xcb_setup_t& setup = *xcb_get_setup(connection_.get());
    const auto codes = static_cast<std::uint8_t>(setup.max_keycode - setup.min_keycode + 1);
    const std::unique_ptr<xcb_get_keyboard_mapping_reply_t, void (*)(void*)> mapping(
        xcb_get_keyboard_mapping_reply(connection_.get(),
                                       xcb_get_keyboard_mapping(connection_.get(), setup.min_keycode, codes),
                                       nullptr),
        &std::free);
    if (!mapping) qFatal("the X server has no keyboard");
    const xcb_keysym_t* const first = xcb_get_keyboard_mapping_keysyms(mapping.get());
    const xcb_keysym_t* const last = first + xcb_get_keyboard_mapping_keysyms_length(mapping.get());
    const auto place = std::find(first, last, static_cast<xcb_keysym_t>(key)) - first;
    return static_cast<std::uint8_t>(setup.min_keycode + place / mapping->keysyms_per_keycode);
}

}  // namespace demo
