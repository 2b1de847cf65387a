#pragma once

#include <Qt>

/// What the monkey types, presses and does to the bus.
namespace quorvel::test {

inline const char* const kTexts[] = {"5",   "12",    "33",    "5",    "12",       "33",       "1",    "0",
                                     "249", "250",   "-1",    "1.5",  "-12.3456", "999.9996", "2",    "1e3",
                                     "FF",  "1e308", "abc",   "±µ向", "",         "3665",     "12 4", "01",
                                     "99",  ":05",   "99999", "\t",   "24.5",     " 7 ",      "-0",   "0.3"};
inline const char* const kAddresses[] = {"5", "12", "12", "33", "250"};
inline const char* const kFiles[] = {
    "", "", "a.mdb", "b.csv", "c.jpg", "d", "nowhere/e.mdb", "XDirection.mdb", "e.png"};
inline const char* const kTrouble[] = {"fault silent@*:1",
                                       "fault short@*:1",
                                       "fault long@*:1",
                                       "fault late=0.1@*:1",
                                       "fault garbled@*:1",
                                       "fault echo@*:1",
                                       "fault hangup@*:1",
                                       "fault count@65:1",
                                       "fault nolf@*:1",
                                       "fault baddate@24:1",
                                       "fault badnumber@*:1",
                                       "fault twice@*:1",
                                       "fault noise@*:1",
                                       "fault bit@*:2",
                                       "fault slot@24:1",
                                       "fault take@22:1",
                                       "fault silent@*:3+2",
                                       "faults clear",
                                       "faults clear",
                                       "unplug",
                                       "plug",
                                       "plug",
                                       "plug",
                                       "set %1 offsetx ABCDEFGH",
                                       "set %1 ring 40,38,2",
                                       "set %1 swap on",
                                       "take %1 3",
                                       "set %1 interval 0 0 1"};
inline const Qt::Key kKeys[] = {
    Qt::Key_Tab,   Qt::Key_Tab,   Qt::Key_Backtab, Qt::Key_Return,   Qt::Key_Enter,    Qt::Key_Escape,
    Qt::Key_Space, Qt::Key_Up,    Qt::Key_Down,    Qt::Key_Left,     Qt::Key_Right,    Qt::Key_Home,
    Qt::Key_End,   Qt::Key_F1,    Qt::Key_F2,      Qt::Key_F5,       Qt::Key_PageDown, Qt::Key_Delete,
    Qt::Key_Menu,  Qt::Key_A,     Qt::Key_C,       Qt::Key_V,        Qt::Key_T,        Qt::Key_X,
    Qt::Key_1,     Qt::Key_Minus, Qt::Key_Period,  Qt::Key_Backspace};
inline const Qt::KeyboardModifiers kModifiers[] = {Qt::NoModifier,    Qt::NoModifier,      Qt::NoModifier,
                                                   Qt::ShiftModifier, Qt::ControlModifier, Qt::AltModifier};

} // namespace quorvel::test
