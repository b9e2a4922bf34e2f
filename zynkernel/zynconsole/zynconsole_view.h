// The view's part that the other console files call: the panel's state, the
// geometry hooks, the key wait, and the release of what the view holds.
#ifndef ZYNCONSOLE_VIEW_H
#define ZYNCONSOLE_VIEW_H

#include "zynconsole.h"

// Rebuilds the glyph quads of the text after a change.
void zynConsole_RebuildText();
// Rebuilds the prompt line after a change of the input or the module.
void zynConsole_RefreshPrompt();
// Reads the window's client area into rcView, cut to half its height.
void zynConsole_ReadView();
// Lets frames run until a character arrives (any one when chKey is 0), the
// window is asked to close, or the wait has lasted 30 s.
void zynConsole_WaitKey(char chKey);
// Start: input on, no history. Stop: the font and the geometry released.
void zynConsole_ResetView();
void zynConsole_ReleaseView();

#endif
