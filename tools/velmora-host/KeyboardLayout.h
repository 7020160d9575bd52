// A US (ANSI) keyboard as the platform reports it: a chord such as
// "ctrl+cmd+left" or "cmd+shift+7" becomes the key-down event the host
// would deliver.
//
// Provides: keyDownEvent(), rawKeyDownEvent().
#pragma once

#include <string>

#include "platform/Events.h"

namespace velmora::host {

// Modifiers ctrl, cmd, opt, shift, caps and fn, joined by "+", then one key:
// a letter, a digit, a punctuation mark or a word (minus, equal, comma,
// period, slash, semicolon, quote, backslash, grave, lbracket, rbracket,
// space, tab, return, enter for the keypad Enter, escape, delete, left,
// right, up, down). charactersIgnoringModifiers honours shift and nothing
// else; caps lock sets its flag only. Each held modifier also sets its
// left-hand device bit, and every event carries the non-coalesced bit, as
// on the platform. Throws ScenarioError on an unknown name.
platform::Event keyDownEvent(const std::string& chord);

// CHARS "-" for no characters, "U+XXXX" for one code point, or the text as
// it stands; KEYCODE decimal; FLAGS hexadecimal, with or without "0x".
platform::Event rawKeyDownEvent(const std::string& characters, const std::string& keyCode, const std::string& flags);

}  // namespace velmora::host
