// Mirrors: the AppKit views that show the views the library makes itself.
//
// Provides: mirrorFor(), mirroredView(), syncMirrors(), startMirroring().
// A pane, its parts and the hosting views of pane descriptions are
// platform views the library owns and changes in place. Each gets one
// mirror, a flipped NSView (the library lays out with y downwards) that
// holds its library view: the title bar and containers draw their layer
// colours, the close button is a push button, the resize handle takes the
// mouse and shows the open hand, a hosting view shows its node tree through
// the renderer (MacRenderer.h), and any other view is a plain container.
// Mirrors are brought in line with their library views (frames, subviews,
// rebuilt trees) just before the main run loop waits, so every change made
// in one turn of it shows at once. Main thread only.
#pragma once

#import <AppKit/AppKit.h>

#include <memory>

#include "platform/Views.h"

namespace velmora::hosts::macos {

// The mirror of a library view, made at first use.
NSView* mirrorFor(const std::shared_ptr<platform::View>& view);
// The library view `view` mirrors, or nullptr when it is no mirror.
std::shared_ptr<platform::View> mirroredView(NSView* view);
// Brings every live mirror in line with its library view.
void syncMirrors();
// Installs the run loop observer that calls syncMirrors(); once.
void startMirroring();

}  // namespace velmora::hosts::macos
