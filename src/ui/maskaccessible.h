// What a screen reader sees of the open time mask: a grouping named as the mask, holding its
// hours, minutes and seconds as three spin boxes with their values, the one the keys go to
// focused. The fields are parts of one drawn widget, so their interfaces are made here, kept
// for the mask's life and handed out by number.
#pragma once

#include "timeedit.h"

class QAccessibleInterface;

namespace tock {

class EditMask;

namespace MaskAccessible {

// The mask's own interface (the factory's answer for an EditMask).
QAccessibleInterface *create(EditMask *mask);

} // namespace MaskAccessible

} // namespace tock
