// What the desktop needs to be told about the main window beyond Qt's own calls: where input
// goes, and how a window raised at another copy's request may take the focus. Each function is
// a no-op where the platform has nothing to say.
#pragma once

#include "controlsocket.h"

#include <QRegion>

class QWidget;

namespace tock {

// Input outside `region` (window coordinates) passes through to the windows behind: the input
// region on Wayland, the input shape on a composited X11 desktop. Drawing is not clipped.
void setInputRegion(QWidget *window, const QRegion &region);

// Shows, un-minimizes and activates `window`, using the tokens another copy was launched with:
// Wayland activates only with a compositor's token, an X11 window manager compares the launch's
// time and ends its startup notification.
void bringToFront(QWidget *window, const ActivationTokens &tokens);

} // namespace tock
